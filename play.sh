#!/bin/bash
# SPDX-License-Identifier: MIT
# Sets up, builds the player alone and plays a message, or the sample where none is named.
#
#   ./play.sh [--for SECONDS] [--player PROGRAM] [MESSAGE]
#
# On a machine without a display the player gets a virtual one, and without a sound card a sound server of its
# own; the script then says how to look and listen, nothing of the person's own is touched, and everything ends
# with the player. Ctrl+C ends it too. With --for the player's window is closed after that time; with --player
# a player that has been built already is used as it is.
set -euo pipefail

usage() {
    echo "usage: play.sh [--for SECONDS] [--player PROGRAM] [MESSAGE]" >&2
    exit 2
}

seconds=
program=
while [ $# -gt 0 ]; do
    case $1 in
        --for) [ $# -ge 2 ] && seconds=$2 && shift || usage ;;
        --player) [ $# -ge 2 ] && program=$2 && shift || usage ;;
        --) shift && break ;;
        -*) usage ;;
        *) break ;;
    esac
    shift
done
[ $# -le 1 ] || usage
root=$(dirname "$(readlink -f "$0")")
message=$(realpath -s -- "${1:-$root/res/sample/welcome.trv}")
if [ ! -r "$message" ]; then
    echo "play.sh: cannot read $message" >&2
    exit 1
fi
cd "$root"

if [ -z "$program" ]; then
    ./setup.sh play
    cmake --preset player --log-level=WARNING >/dev/null
    cmake --build --preset player -- --quiet
fi
player=("$(realpath -- "${program:-build/player/app/trvplayer}")" "$message")
if [ -n "$seconds" ]; then
    player=("$root/scripts/close-after" "$seconds" "${player[@]}")
fi

# An X display that answers, or a Wayland one that the installed Qt can use. An X display counts as answering
# where nothing can ask it.
has_display() {
    if [ -n "${DISPLAY:-}" ]; then
        command -v xdpyinfo >/dev/null || return 0
        if timeout 5 xdpyinfo >/dev/null 2>&1; then
            return 0
        fi
    fi
    local socket=${WAYLAND_DISPLAY:-}
    [ -n "$socket" ] || return 1
    [ "${socket:0:1}" = / ] || socket=${XDG_RUNTIME_DIR:-}/$socket
    [ -S "$socket" ] && compgen -G "/usr/lib/*/qt6/plugins/platforms/libqwayland*.so" >/dev/null
}

# A sound server with more than the sink that a server without a card makes up, or a card to start one for.
has_sound() {
    local probe sink
    probe=$(mktemp -d)
    echo "autospawn = no" >"$probe/client.conf"
    sink=$(PULSE_CLIENTCONFIG=$probe/client.conf PULSE_COOKIE=$probe/cookie \
        timeout 5 pactl get-default-sink 2>/dev/null) || sink=
    rm -r "$probe"
    case $sink in
        auto_null | @DEFAULT_SINK@) return 1 ;;
        "") [ "$(id -u)" -ne 0 ] && grep -q '^ *[0-9]' /proc/asound/cards 2>/dev/null ;;
    esac
}

session=()
needs=()
if ! has_display; then
    session=(scripts/private-session --say)
    needs=(display sound)
elif ! has_sound; then
    session=(scripts/private-session --say --only-sound)
    needs=(sound)
fi
if [ -z "$program" ] && [ ${#needs[@]} -gt 0 ]; then
    ./setup.sh "${needs[@]}"
fi
exec "${session[@]}" "${player[@]}"
