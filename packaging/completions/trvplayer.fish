# SPDX-License-Identifier: MIT
complete -c trvplayer -f -k -a '(__fish_complete_suffix .trv)'
complete -c trvplayer -s h -l help -d 'Print a summary and end'
complete -c trvplayer -l version -d 'Print the version and end'
