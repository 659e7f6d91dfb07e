# SPDX-License-Identifier: MIT
# bash completion for trvdump                              -*- shell-script -*-
_trvdump() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --wav | --pcm | --thumbnail) _filedir && return ;;
        --png | --bgr) _filedir -d && return ;;
        --quality) COMPREPLY=($(compgen -W '0 1 2 3' -- "$cur")) && return ;;
        --size) COMPREPLY=($(compgen -W '128 256 512 1024' -- "$cur")) && return ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '--json --wav --pcm --png --bgr --quality --thumbnail --size -h --help --version' -- "$cur"))
    else
        _filedir 'trv'
    fi
} && complete -F _trvdump trvdump
