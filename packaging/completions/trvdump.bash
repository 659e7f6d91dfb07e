# SPDX-License-Identifier: MIT
# bash completion for trvdump                              -*- shell-script -*-
_trvdump() {
    local cur prev words cword
    _init_completion || return
    case $prev in
        --wav | --pcm | --audio | --video | --thumbnail) _filedir && return ;;
        --png | --bgr) _filedir -d && return ;;
        --format) COMPREPLY=($(compgen -W 'mp4 webm mkv gif webp wav flac opus ogg mp3' -- "$cur")) && return ;;
        --from | --to | --jobs) return ;;
        --quality) COMPREPLY=($(compgen -W '0 1 2 3' -- "$cur")) && return ;;
        --size) COMPREPLY=($(compgen -W '128 256 512 1024' -- "$cur")) && return ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '--json --json-lines --video --audio --wav --pcm --png --bgr --format --from --to --quality --force --jobs --thumbnail --size -h --help --version' -- "$cur"))
    else
        _filedir 'trv'
    fi
} && complete -F _trvdump trvdump
