#!/bin/sh
# Draws the pictures that player.rc takes in, from the SVG files beside this script, into the folder above.
# Needs rsvg-convert (librsvg2-bin), icotool (icoutils) and convert (imagemagick); building the player does not.
set -eu
art=$(cd "$(dirname "$0")" && pwd)
res=$(dirname "$art")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# draw DRAWING WIDTH HEIGHT NAME
draw() {
    rsvg-convert -w "$2" -h "$3" "$art/$1.svg" -o "$work/$4.png"
}

# The smallest sizes have drawings of their own, laid on their pixel grid. 256 is stored compressed.
draw trvplayer-16 16 16 app16
draw trvplayer-32 32 32 app32
for size in 24 48 64 128 256; do
    draw trvplayer $size $size app$size
done
(cd "$work" && icotool -c -o "$res/player.ico" app16.png app24.png app32.png app48.png app64.png app128.png \
    --raw=app256.png)

for name in play pause stop volume; do
    draw $name 32 32 $name
    icotool -c -o "$res/$name.ico" "$work/$name.png"
done

draw hand 32 32 hand
icotool -c --cursor --hotspot-x=13 --hotspot-y=9 -o "$res/hand.cur" "$work/hand.png"

draw about 195 198 about
convert "$work/about.png" -alpha off -type TrueColor "BMP3:$res/about.bmp"
