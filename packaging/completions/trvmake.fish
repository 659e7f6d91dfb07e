# SPDX-License-Identifier: MIT
complete -c trvmake -s i -l input -r -F -d 'A film or a sound file'
complete -c trvmake -s s -l sound -r -F -d 'The speech'
complete -c trvmake -s p -l pictures -r -F -d 'The pictures'
complete -c trvmake -s r -l rate -x -a '1 2 3 4 5' -d 'Pictures per second'
complete -c trvmake -s q -l quality -x -a '0 1 2 3' -d 'Level of the pictures'
complete -c trvmake -s o -l output -r -F -d 'The message to write'
complete -c trvmake -s h -l help -d 'Print a summary and end'
complete -c trvmake -l version -d 'Print the version and end'
