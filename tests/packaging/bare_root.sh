#!/bin/bash
# SPDX-License-Identifier: MIT
# Installs the packages in a minimal Debian 12 of their own with nothing but what they depend on, uses them without a
# network as a desktop does (debian/tests/desktop), and removes them again.
#
#   bare_root.sh FOLDER        FOLDER holds the two packages, as dpkg-buildpackage leaves them
#
# Exits with 77, which means skipped, where it is not root, cannot make namespaces, has no mmdebstrap or cannot make
# the minimal system. That is made in a temporary folder, and every process in it ends with the script. How packages
# are reached is taken from this machine's own apt.
set -euo pipefail

self=$(readlink -f "$0")
source=$(dirname "$(dirname "$(dirname "$self")")")

fail() {
    echo "bare_root: $1" >&2
    exit 1
}

# The trial, called by mmdebstrap once the minimal system stands.
if [ "${1:-}" = --trial ]; then
    root=$2
    touch "$TRV_STARTED"
    names=(trivelle-message-player trivelle-message-tools)
    apt() {
        APT_CONFIG=$MMDEBSTRAP_APT_CONFIG DEBIAN_FRONTEND=noninteractive apt-get --quiet=2 --yes \
            -o DPkg::Chroot-Directory="$root" -o DPkg::Use-Pty=0 -o APT::Install-Recommends=false "$@" >/dev/null
    }
    # Neither a network nor another process is seen from within.
    inside() {
        unshare --mount --pid --net --fork --kill-child sh -c \
            'mount -t proc proc "$0/proc" && exec chroot "$0" "$@"' "$root" "$@"
    }
    installed() {
        dpkg-query --admindir="$root/var/lib/dpkg" -W -f '${Installed-Size} ${Package}\n' | sort
    }

    bare=$(installed)
    depends=$(for deb in "$TRV_PLAYER_DEB" "$TRV_TOOLS_DEB"; do dpkg-deb -f "$deb" Depends; done |
        sed 's/trivelle-message-tools ([^)]*), //' | paste -sd,)
    apt satisfy "$depends"
    cp "$TRV_PLAYER_DEB" "$TRV_TOOLS_DEB" "$root/tmp"
    inside sh -c 'dpkg --install /tmp/*.deb >/dev/null && rm /tmp/*.deb'
    echo "bare_root: installed; with what they depend on: $(comm -13 <(echo "$bare") <(installed) |
        awk '{ size += $1; count++ } END { print count " packages, " int(size / 1024) " MiB" }')"
    cp "$source/res/sample/welcome.trv" "$root/tmp"
    inside trvdump --thumbnail /tmp/thumbnail.png /tmp/welcome.trv
    inside test -s /tmp/thumbnail.png || fail "no thumbnail"
    ! inside ldd /usr/bin/trvplayer /usr/bin/trvmake /usr/bin/trvdump | grep "not found" || fail "libraries are missing"
    ! inside ldd /usr/bin/trvdump | grep Qt || fail "the tools need Qt"

    # What the desktop's part needs besides is said in one place, for autopkgtest too.
    apt install $(sed -n 's/^Depends: @, //p' "$source/debian/tests/control" | tr -d ,)
    mkdir -p "$root/tmp/source/tests" "$root/tmp/source/res"
    cp -r "$source/debian" "$root/tmp/source"
    cp -r "$source/res/sample" "$root/tmp/source/res"
    cp -r "$source/tests/data" "$root/tmp/source/tests"
    inside sh -c 'cd /tmp/source && debian/tests/desktop'

    apt purge "${names[@]}"
    rm -r "$root/tmp/source" "$root/tmp/welcome.trv" "$root/tmp/thumbnail.png"
    pattern='trivelle|trvplayer|trvdump|trvmake'
    left=$(cd "$root" && find . -xdev -path ./dev -prune -o -print | grep -E "$pattern" || true)
    named=$(grep -rlE "$pattern" "$root"/{etc,usr/share,var/lib} --exclude-dir={apt,dpkg} || true)
    [ -z "$left$named" ] || fail "left after removal: $left $named"
    echo "bare_root: removed, nothing left"
    exit
fi

folder=$(readlink -f "${1:?the folder of the packages}")
TRV_PLAYER_DEB=$(echo "$folder"/trivelle-message-player_*.deb)
TRV_TOOLS_DEB=$(echo "$folder"/trivelle-message-tools_*.deb)
export TRV_PLAYER_DEB TRV_TOOLS_DEB
[ -f "$TRV_PLAYER_DEB" ] && [ -f "$TRV_TOOLS_DEB" ] || fail "not one of each package in $folder"

skip() {
    echo "bare_root: skipped: $1"
    exit 77
}
[ "$(id -u)" -eq 0 ] || skip "needs root"
command -v mmdebstrap >/dev/null || skip "needs mmdebstrap"
unshare --mount --pid --net --fork true 2>/dev/null || skip "cannot make namespaces"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# This machine's ways to the archive, for the time of the trial only.
apt-config dump | grep -E '^Acquire::(http|https|Retries|ForceIPv)' >"$work/apt.conf" || true
mirrors=()
for list in /etc/apt/sources.list /etc/apt/sources.list.d/debian.{list,sources}; do
    [ ! -s "$list" ] || mirrors+=("$list")
done
export TRV_STARTED=$work/started
mmdebstrap --quiet --mode=root --variant=minbase --format=null --aptopt="$work/apt.conf" --dpkgopt=force-unsafe-io \
    --customize-hook="'$self' --trial \"\$1\"" bookworm - "${mirrors[@]}" </dev/null && exit
[ -e "$TRV_STARTED" ] || skip "no minimal system could be made"
exit 1
