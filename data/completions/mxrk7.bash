# SPDX-License-Identifier: MIT
# Copyright (c) 2024-2026 Norvane
# bash completion of mxrk7. The tool itself answers (mxrk7 __complete), so verbs, settings, their
# arguments and values are always those of the installed version.

_mxrk7() {
    local cur=${COMP_WORDS[COMP_CWORD]}
    local -a candidates
    mapfile -t candidates < <("${COMP_WORDS[0]}" __complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
    case ${candidates[0]-} in
        @files) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return 0 ;;
        @folders) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -d -- "$cur"); return 0 ;;
    esac
    # Menu texts hold blanks: each candidate is one word, quoted for the command line.
    COMPREPLY=()
    local candidate
    for candidate in "${candidates[@]}"; do
        COMPREPLY+=("$(printf '%q' "$candidate")")
    done
}
complete -F _mxrk7 mxrk7
