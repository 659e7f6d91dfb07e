# SPDX-License-Identifier: MIT
# bash completion for trvplayer                            -*- shell-script -*-
_trvplayer() {
    local cur prev words cword
    _init_completion || return
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '-h --help --version' -- "$cur"))
    else
        _filedir 'trv'
    fi
} && complete -F _trvplayer trvplayer
