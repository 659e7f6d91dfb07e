#!/bin/sh
# SPDX-License-Identifier: MIT
# Draws the pictures that player.rc takes in, from the SVG files beside this script, into the folder above, and the
# icons that are installed into icons/ there. What it draws is kept in the repository, so that building needs no renderer.
# Needs rsvg-convert (librsvg2-bin), icotool (icoutils) and convert (imagemagick).
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

# The buttons' icons have sixteen colours at 32 pixels; larger screens take them from the drawings, compressed.
for name in play pause stop volume; do
    draw $name 32 32 $name
    convert "$work/$name.png" -channel A -threshold 45% +channel +dither -colors 16 "PNG8:$work/$name-16.png"
    set -- "$work/$name-16.png"
    for size in 40 48 56 64 96; do
        draw $name $size $size $name$size
        set -- "$@" "--raw=$work/$name$size.png"
    done
    icotool -c -o "$res/$name.ico" "$@"
done

draw hand 32 32 hand
icotool -c --cursor --hotspot-x=13 --hotspot-y=9 -o "$res/hand.cur" "$work/hand.png"

draw about 195 198 about
convert "$work/about.png" -alpha off -type TrueColor "BMP3:$res/about.bmp"

# The icon theme's folders. The smallest drawings serve the sizes next to their own too.
install_icon() { # DRAWING SIZE KIND NAME
    mkdir -p "$res/icons/hicolor/$2x$2/$3"
    rsvg-convert -w "$2" -h "$2" "$art/$1.svg" -o "$res/icons/hicolor/$2x$2/$3/$4.png"
}
for size in 16 22 24 32 48 64 128 256; do
    case $size in
        16 | 22 | 24) program=trvplayer-$((size < 22 ? 16 : 32)) message=message-16 ;;
        32) program=trvplayer-32 message=message ;;
        *) program=trvplayer message=message ;;
    esac
    install_icon "$program" "$size" apps com.trivelle.MessagePlayer
    install_icon "$message" "$size" mimetypes com.trivelle.MessagePlayer.message
done
