#!/bin/bash
# Installs the Debian packages that building, playing and testing need; quick when nothing is missing.
#
#   ./setup.sh              what ./play.sh and ./test.sh need
#   ./setup.sh --fuzz       also the compiler for the fuzz preset
#   ./setup.sh --bench      also the programs that bench/ measures against
#   ./setup.sh --check      installs nothing; names what is missing and exits 1 if anything is
set -euo pipefail

# Compilers and libraries.
build=(
    g++ cmake ninja-build pkg-config git
    qt6-base-dev libgl1-mesa-dev
    libpulse-dev
    libgsm1-dev
    libsndfile1-dev libsamplerate0-dev libpng-dev
    binutils-mingw-w64-i686 # windres, for res/player.rc
    libgtest-dev            # the tests belong to every configuration
)

# What the player needs around it: a sans face, the shared MIME database, the sound client's tools, and a
# display and sound server of its own where the machine has none.
run=(
    qt6-qpa-plugins
    fonts-liberation
    shared-mime-info desktop-file-utils xdg-utils libglib2.0-bin
    pulseaudio pulseaudio-utils
    xvfb openbox x11-utils xdotool imagemagick
)

# What the tests need besides.
test=(
    python3
    clang-format # the style is a test
)

fuzz=(
    clang libclang-rt-14-dev
)

bench=(
    libbenchmark-dev
    mpv ffmpeg sox
    libturbojpeg0-dev libopenjp2-7-dev libsox-fmt-all python3-xlib python3-matplotlib
    espeak-ng # tools/sample makes the sample messages with it
)

wanted=("${build[@]}" "${run[@]}" "${test[@]}")
check=
for argument in "$@"; do
    case $argument in
        --fuzz) wanted+=("${fuzz[@]}") ;;
        --bench) wanted+=("${bench[@]}") ;;
        --check) check=1 ;;
        *)
            echo "usage: setup.sh [--fuzz] [--bench] [--check]" >&2
            exit 2
            ;;
    esac
done

if ! command -v dpkg-query >/dev/null; then
    echo "setup.sh: this is no Debian system; install what stands for: ${wanted[*]}" >&2
    exit 1
fi

# A package that another one provides counts as installed under its own name only, which all of these have.
installed=$(dpkg-query -W -f='${db:Status-Status} ${binary:Package}\n' "${wanted[@]}" 2>/dev/null |
    sed -n 's/^installed \([^:]*\).*/\1/p') || true
missing=()
for package in "${wanted[@]}"; do
    grep -qxF -- "$package" <<<"$installed" || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi
if [ -n "$check" ]; then
    echo "setup.sh: missing: ${missing[*]}" >&2
    exit 1
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup.sh: run as root: apt-get install --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
echo "setup.sh: installing ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
