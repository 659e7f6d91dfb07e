#!/bin/bash
# SPDX-License-Identifier: MIT
# Installs the Debian packages that are missing, and removes none: where one cannot be installed beside what is
# there, it says which and why, and installs nothing. Quick when nothing is missing.
#
#   ./setup.sh [--check] [LEVEL...]
#
#   play       what building and playing need (the default)
#   display    a virtual display, for a machine that has none
#   sound      a sound server for private sessions: PipeWire's where its PulseAudio service is installed
#   test       all of these, and what the tests need
#   fuzz       test, and the compiler for the preset fuzz
#   bench      test, what bench/ is built with, and the programs that it measures against
#   cross      test, and what building for arm64 and testing that under qemu need
#   cross32    test, and what building for i386 needs, which a 64-bit x86 machine runs by itself
#   ci         test, fuzz, PipeWire's sound beside PulseAudio's, what bench/ is built with, the formatter, and what
#              packages are built and tried with: what .ci/run needs
#
# --check installs nothing; it names what is missing and exits 1 if anything is. On a system without apt it is
# all that is done: programs, pkg-config modules and headers are looked for.
set -euo pipefail
export LC_ALL=C

# Level, Debian package, and what shows that it is there where no package manager says so: a program, a
# pkg-config module (pc:), a header (h:), or nothing (-).
packages='
play g++ c++
play cmake cmake
play ninja-build ninja
play pkg-config pkg-config
play qt6-base-dev pc:Qt6Widgets
play libpulse-dev pc:libpulse
play libgsm1-dev h:gsm/gsm.h
play libsonic-dev h:sonic.h
play binutils-mingw-w64-i686 i686-w64-mingw32-windres
play fonts-liberation -
play shared-mime-info update-mime-database
play desktop-file-utils update-desktop-database
play xdg-utils xdg-mime
play pulseaudio-utils pactl
display xvfb Xvfb
display openbox openbox
display x11-utils xprop
display xdotool xdotool
display imagemagick import
test x11-xserver-utils xrandr
test git git
test python3 python3
test libgtest-dev pc:gtest
test libsndfile1-dev pc:sndfile
test libsamplerate0-dev pc:samplerate
test libpng-dev pc:libpng
test libseccomp-dev pc:libseccomp
test libglib2.0-bin gio
test dbus-daemon dbus-daemon
test ffmpeg ffmpeg
test playerctl playerctl
test python3-dbusmock -
test at-spi2-core -
test gir1.2-atspi-2.0 -
test python3-gi -
test appstream appstreamcli
fuzz clang clang++
fuzz libclang-rt-14-dev -
build-bench libbenchmark-dev pc:benchmark
build-bench libturbojpeg0-dev pc:libturbojpeg
build-bench libopenjp2-7-dev pc:libopenjp2
bench mpv mpv
bench sox sox
bench libsox-fmt-all -
bench python3-xlib -
bench python3-matplotlib -
bench espeak-ng espeak-ng
cross g++-aarch64-linux-gnu aarch64-linux-gnu-g++
cross qemu-user qemu-aarch64
cross qt6-base-dev:arm64 -
cross libpulse-dev:arm64 -
cross libgsm1-dev:arm64 -
cross libsonic-dev:arm64 -
cross libgtest-dev:arm64 -
cross libsndfile1-dev:arm64 -
cross libsamplerate0-dev:arm64 -
cross libpng-dev:arm64 -
cross32 g++-i686-linux-gnu i686-linux-gnu-g++
cross32 qt6-base-dev:i386 -
cross32 libpulse-dev:i386 -
cross32 libgsm1-dev:i386 -
cross32 libsonic-dev:i386 -
cross32 libgtest-dev:i386 -
cross32 libsndfile1-dev:i386 -
cross32 libsamplerate0-dev:i386 -
cross32 libpng-dev:i386 -
cross32 libseccomp-dev:i386 -
ci pipewire pipewire
ci wireplumber wireplumber
ci pipewire-pulse pipewire-pulse
ci python3-xlib -
ci clang-format-14 clang-format-14
ci build-essential -
ci debhelper dh
ci lintian lintian
ci mmdebstrap mmdebstrap
'
# PulseAudio's daemon excludes PipeWire's sound packages; one of the two serves.
if ! command -v pulseaudio >/dev/null && command -v pipewire-pulse >/dev/null; then
    packages+='
sound pipewire pipewire
sound wireplumber wireplumber
sound pipewire-pulse pipewire-pulse
sound dbus-daemon dbus-daemon
'
else
    packages+='
sound pulseaudio pulseaudio
'
fi

check=
levels=' '
for argument in "$@"; do
    case $argument in
        --check) check=1 ;;
        play | display | sound) levels+="$argument " ;;
        test | fuzz | cross | cross32) levels+="play display sound test $argument " ;;
        bench) levels+="play display sound test build-bench bench " ;;
        ci) levels+="play display sound test fuzz build-bench ci " ;;
        *)
            echo "usage: setup.sh [--check] [play|display|sound|test|fuzz|bench|cross|cross32|ci]..." >&2
            exit 2
            ;;
    esac
done
[ "$levels" != ' ' ] || levels=' play '

is_there() {
    case $1 in
        -) true ;;
        pc:*) pkg-config --exists "${1#pc:}" 2>/dev/null ;;
        h:*) c++ -E -x c++ - <<<"#include <${1#h:}>" >/dev/null 2>&1 ;;
        *) command -v "$1" >/dev/null ;;
    esac
}

apt=
if command -v apt-get >/dev/null && command -v dpkg-query >/dev/null; then
    apt=1
    # A package that another one stands in for counts under its own name only, which all of these have. This machine's
    # own architecture is not part of the name.
    native=$(dpkg --print-architecture 2>/dev/null) || native=
    installed=$(dpkg-query -W -f='${db:Status-Status} ${binary:Package}\n' 2>/dev/null |
        sed -n "s/^installed //; T; s/:$native\$//; p") || true
fi
missing=()
while read -r level package probe; do
    [[ -n $level && $levels == *" $level "* ]] || continue
    if [ -n "$apt" ]; then
        [[ $'\n'$installed$'\n' == *$'\n'$package$'\n'* ]] || missing+=("$package")
    else
        is_there "$probe" || missing+=("${probe#*:}")
    fi
done <<<"$packages"
if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi
if [ -n "$check" ] || [ -z "$apt" ]; then
    echo "setup.sh: missing: ${missing[*]}" >&2
    [ -n "$apt" ] || echo "setup.sh: there is no apt here; install what they belong to" >&2
    exit 1
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup.sh: run as root: apt-get install --no-remove --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
options=(-y -qq --no-remove --no-install-recommends)

# What would be done, without doing it.
simulate() {
    apt-get -s "${options[@]}" install "$@" 2>&1
}

# Where it comes to nothing, the system knows no more architectures than before.
added=()
forget_added() {
    for architecture in "${added[@]}"; do
        "${as_root[@]}" dpkg --remove-architecture "$architecture" || true
    done
}
trap '[ $? -eq 0 ] || forget_added' EXIT
for architecture in arm64 i386; do
    [[ " ${missing[*]} " == *":$architecture "* ]] || continue
    ! dpkg --print-foreign-architectures | grep -qx "$architecture" || continue
    "${as_root[@]}" dpkg --add-architecture "$architecture"
    added+=("$architecture")
done
"${as_root[@]}" apt-get update -qq
if ! plan=$(simulate "${missing[@]}") || grep -q '^Remv' <<<"$plan"; then
    echo "setup.sh: nothing was installed." >&2
    alone=1
    for package in "${missing[@]}"; do
        plan=$(apt-get -s -qq --no-install-recommends install "$package" 2>&1) || {
            alone=
            echo "setup.sh: $package cannot be installed:" >&2
            sed 's/^/    /' <<<"$plan" >&2
            continue
        }
        removed=$(sed -n 's/^Remv \([^ ]*\).*/\1/p' <<<"$plan" | paste -sd ' ')
        [ -n "$removed" ] || continue
        alone=
        echo "setup.sh: $package cannot be installed without removing $removed" >&2
    done
    if [ -n "$alone" ]; then
        echo "setup.sh: ${missing[*]} cannot be installed together:" >&2
        simulate "${missing[@]}" | sed 's/^/    /' >&2
    fi
    exit 1
fi
echo "setup.sh: installing ${missing[*]}"
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get "${options[@]}" install "${missing[@]}"
