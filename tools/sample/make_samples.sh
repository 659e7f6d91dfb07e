#!/bin/bash
# SPDX-License-Identifier: MIT
# Makes the messages that come with the player, from nothing but this script:
#
#   res/sample/welcome.trv    a voice and a balloon over hills, 3 pictures a second
#   tests/data/short.trv      two speech blocks (0.4 s), voice only
#
# Needs espeak-ng, ImageMagick, sox and a built trvmake:  tools/sample/make_samples.sh BUILD_FOLDER
# The results are kept in the repository; building and playing need none of this.
set -euo pipefail

if [ $# -ne 1 ]; then
    echo "usage: make_samples.sh BUILD_FOLDER" >&2
    exit 2
fi
trvmake=$(realpath "$1")/tools/trvmake
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

rate=3
pictures=39
font=$(fc-match -f '%{file}' 'sans:bold')

# A point of the balloon's way, from left to right in an arc: picture, offset, and the height of the arc.
at() { awk -v k="$1" -v n="$pictures" "BEGIN { t = k / (n - 1); printf \"%.1f\", $2 }"; }

# What does not move: sky, sun, three ranges of hills.
convert -size 320x240 gradient:'#6f9bd1-#f7dcb4' \
    -fill '#fff3cf' -draw 'circle 246,96 246,74' -blur 0x1.2 \
    -fill '#9fb3c6' -draw 'path "M 0,160 C 50,120 90,130 140,150 S 240,120 320,150 L 320,240 L 0,240 Z"' \
    -fill '#6f9a84' -draw 'path "M 0,190 C 70,150 120,160 180,182 S 270,160 320,176 L 320,240 L 0,240 Z"' \
    -fill '#436b4d' -draw 'path "M 0,216 C 80,190 150,196 210,212 S 290,202 320,206 L 320,240 L 0,240 Z"' \
    "$work/ground.png"

convert -size 120x40 xc:none -fill '#ffffffc0' \
    -draw 'ellipse 40,24 30,10 0,360' -draw 'ellipse 62,18 26,12 0,360' -draw 'ellipse 86,25 26,8 0,360' \
    -blur 0x2 "$work/cloud.png"

# The balloon: envelope in gores, basket below.
convert -size 80x110 xc:none -fill '#c8423c' -draw 'ellipse 40,38 34,36 0,360' \
    -fill '#f0c24b' -draw 'ellipse 40,38 22,36 0,360' -fill '#c8423c' -draw 'ellipse 40,38 9,36 0,360' \
    -fill '#c8423c' -draw 'polygon 17,64 63,64 47,84 33,84' \
    -stroke '#4a3a2c' -strokewidth 1.5 -draw 'line 34,84 35,94' -draw 'line 46,84 45,94' \
    -stroke none -fill '#7a5532' -draw 'roundrectangle 32,93 48,106 2,2' "$work/balloon.png"

for ((k = 0; k < pictures; k++)); do
    convert "$work/ground.png" \
        "$work/cloud.png" -geometry "+$(at $k '20 + 60 * t')+18" -composite \
        "$work/cloud.png" -geometry "+$(at $k '190 + 40 * t')+44" -composite \
        "$work/balloon.png" -geometry "+$(at $k '10 + 220 * t')+$(at $k '84 - 62 * sin(3.1416 * (0.12 + 0.8 * t))')" \
        -composite \
        -font "$font" -pointsize 30 -gravity south \
        -fill '#00000070' -annotate +1+11 'Trivelle' -fill white -annotate +0+13 'Trivelle' \
        "$work/picture-$(printf %02d "$k").png"
done

say() { espeak-ng -v en-gb -s "$2" -p 45 -w "$work/spoken.wav" "$1" && sox "$work/spoken.wav" "$3" "${@:4}"; }

say "Hello, and welcome! This is a message for the Trivelle Message Player. \
If you hear these words, and see a balloon drift over the hills, then all is well. \
Have a very good day. Goodbye!" 150 "$work/welcome.wav" norm -3 pad 0.2 0.4
say "Hi" 150 "$work/short.wav" norm -3 pad 0 0.4 trim 0 0.4

mkdir -p res/sample
"$trvmake" --sound "$work/welcome.wav" --pictures "$work"/picture-*.png --rate "$rate" res/sample/welcome.trv
"$trvmake" --sound "$work/short.wav" tests/data/short.trv
