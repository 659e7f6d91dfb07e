# SPDX-License-Identifier: MIT
# bash completion for trvmake                              -*- shell-script -*-
_trvmake() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        -i | --input | -s | --sound | -p | --pictures) _filedir && return ;;
        -r | --rate) COMPREPLY=($(compgen -W '1 2 3 4 5' -- "$cur")) && return ;;
        -q | --quality) COMPREPLY=($(compgen -W '0 1 2 3' -- "$cur")) && return ;;
        -o | --output) _filedir 'trv' && return ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '-i --input -s --sound -p --pictures -r --rate -q --quality -o --output -h --help --version' -- "$cur"))
    else
        _filedir
    fi
} && complete -F _trvmake trvmake
