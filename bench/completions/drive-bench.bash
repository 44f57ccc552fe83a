# Completion of drive-bench for bash. Source it from ~/.bashrc, or copy it as "drive-bench" into
# ~/.local/share/bash-completion/completions/. The command itself knows what fits.

# Sets REPLY to a word as the shell reads it, without its quoting; the last quote may still be open.
_drive_bench_unquote() {
    local quote= letter i
    REPLY=
    for ((i = 0; i < ${#1}; i++)); do
        letter=${1:i:1}
        if [ "$letter" = "$quote" ]; then
            quote=
        elif [ -z "$quote" ] && [[ $letter == [\'\"] ]]; then
            quote=$letter
        elif [ "$letter" = \\ ] && { [ -z "$quote" ] || { [ "$quote" = \" ] && [[ ${1:i+1:1} == [\\\"\$\`] ]]; }; }; then
            i=$((i + 1))
            REPLY+=${1:i:1}
        else
            REPLY+=$letter
        fi
    done
}

_drive_bench() {
    local word words=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
        _drive_bench_unquote "$word"
        # Bash makes three words of --option=value.
        if [ ${#words[@]} -gt 0 ] && [[ ${words[-1]} == --* ]] && { [ "$REPLY" = = ] || [[ ${words[-1]} == *= ]]; }; then
            words[-1]+=$REPLY
        else
            words+=("$REPLY")
        fi
    done
    mapfile -t COMPREPLY < <("${COMP_WORDS[0]}" --complete "${words[@]}" 2>/dev/null)
    if [[ $(printf '%s' "${COMPREPLY[@]}") == *[!A-Za-z0-9=._-]* ]]; then
        # As it does with names of files, the shell then quotes what is found like the word that was begun.
        compopt -o filenames 2>/dev/null
    fi
    if [ ${#COMPREPLY[@]} -eq 0 ]; then
        # Where the command has nothing to offer, a file may be meant.
        compopt -o default 2>/dev/null
    elif [ ${#COMPREPLY[@]} -eq 1 ] && [[ ${COMPREPLY[0]} == *= ]]; then
        compopt -o nospace 2>/dev/null
    fi
}

complete -F _drive_bench drive-bench
