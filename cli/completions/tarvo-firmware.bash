# Completes the commands, options and, for an update, the serial numbers of the attached drives.

_tarvo_firmware() {
    local word=${COMP_WORDS[COMP_CWORD]} words
    case $COMP_CWORD:${COMP_WORDS[1]} in
    1:*) words="list update report --help --version" ;;
    *:list) words="--json --timeout --help" ;;
    *:update)
        words="--all --yes --dry-run --wait --on-battery --json --timeout --help"
        if [[ $word != -* ]]; then
            words=$("$1" list --timeout 0 2>/dev/null | sed -n 's/.*, serial number //p')
        fi
        ;;
    *:report) words="--serials --timeout --help" ;;
    esac
    local IFS=$'\n'
    COMPREPLY=($(compgen -W "${words// /$'\n'}" -- "$word"))
}
complete -F _tarvo_firmware tarvo-firmware
