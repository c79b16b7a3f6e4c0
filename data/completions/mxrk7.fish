# SPDX-License-Identifier: MIT
# Copyright (c) 2024-2026 Norvane
# fish completion of mxrk7. The tool itself answers (mxrk7 __complete), so verbs, settings, their
# arguments and values are always those of the installed version.

function __mxrk7_complete
    set -l words (commandline -opc)
    set -l candidates (mxrk7 __complete -- $words[2..-1] (commandline -ct) 2>/dev/null)
    switch "$candidates[1]"
        case @files
            __fish_complete_path (commandline -ct)
        case @folders
            __fish_complete_directories (commandline -ct)
        case '*'
            printf '%s\n' $candidates
    end
end
complete -c mxrk7 -f -a '(__mxrk7_complete)'
