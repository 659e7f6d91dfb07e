#!/bin/bash
# SPDX-License-Identifier: MIT
# Builds the Debian packages from a clean clone of the last commit, lets lintian look at them, and tries them in a
# minimal system (bare_root.sh).
#
#   packages.sh [FOLDER]       keeps the packages in FOLDER
#
# Exits with 77, which means skipped, where the packages were built but cannot be tried here.
set -euo pipefail

here=$(dirname "$(readlink -f "$0")")
root=$(dirname "$(dirname "$here")")
for program in dpkg-buildpackage dh lintian; do
    command -v "$program" >/dev/null || { echo "packages: skipped: needs $program" && exit 77; }
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
git -c safe.directory='*' clone --quiet --no-hardlinks "$root" "$work/source"
(cd "$work/source" && DEB_BUILD_OPTIONS="parallel=$(nproc)" dpkg-buildpackage --unsigned-source --unsigned-changes) \
    >"$work/log" 2>&1 || { tail -n 40 "$work/log" && exit 1; }
lintian --allow-root --fail-on error,warning --tag-display-limit 0 "$work"/*.changes
dpkg-deb --show --showformat '${Package} ${Version}: ${Installed-Size} KiB installed\n' "$work"/trivelle-message-player_*.deb
dpkg-deb --show --showformat '${Package} ${Version}: ${Installed-Size} KiB installed\n' "$work"/trivelle-message-tools_*.deb
[ $# -eq 0 ] || cp "$work"/*.deb "$1"
"$here/bare_root.sh" "$work"
