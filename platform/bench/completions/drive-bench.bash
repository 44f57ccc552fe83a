# Completion of drive-bench for bash. Source it from ~/.bashrc, or copy it as "drive-bench" into
# ~/.local/share/bash-completion/completions/. The command itself knows what fits.

_drive_bench() {
    local candidate current="${COMP_WORDS[COMP_CWORD]}"
    COMPREPLY=()
    # Where the command has nothing to offer, a file may be meant.
    while IFS= read -r candidate; do
        COMPREPLY+=("$(printf '%q' "$candidate")")
    done < <("${COMP_WORDS[0]}" --complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
    if [ ${#COMPREPLY[@]} -eq 0 ]; then
        compopt -o default 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
    if [ ${#COMPREPLY[@]} -eq 1 ] && [[ ${COMPREPLY[0]} == *= ]]; then
        compopt -o nospace 2>/dev/null
    fi
}

complete -F _drive_bench drive-bench
