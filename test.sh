#!/bin/bash
# Sets up, builds and tests: the release suite, the address and undefined-behaviour suite, and under the thread
# sanitizer those suites that have more than one thread.
#
#   ./test.sh                        all three
#   ./test.sh release|asan|tsan ...  only these
#
# Every test runs in a private home and private XDG folders, without the person's display and sound server.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"

suites=("$@")
[ ${#suites[@]} -gt 0 ] || suites=(release asan tsan)
for suite in "${suites[@]}"; do
    case $suite in
        release | asan | tsan) ;;
        *)
            echo "usage: test.sh [release|asan|tsan]..." >&2
            exit 2
            ;;
    esac
done

./setup.sh

jobs=$(nproc)
work=$(mktemp -d "${TMPDIR:-/tmp}/trv-test.XXXXXX")
trap 'rm -rf "$work"' EXIT
export TRV_TEST_HOME=$work
# Building runs the test programs too, to list their tests.
mkdir -m 700 "$work/run"
export HOME=$work XDG_RUNTIME_DIR=$work/run QT_QPA_PLATFORM=offscreen
unset DISPLAY WAYLAND_DISPLAY PULSE_SERVER

# The sanitizers' shadow memory has fixed addresses that a fully randomised address space can collide with.
fixed_addresses=()
if setarch -R true 2>/dev/null; then
    fixed_addresses=(setarch -R)
fi

failed=()
for suite in "${suites[@]}"; do
    prefix=()
    [ "$suite" = release ] || prefix=("${fixed_addresses[@]}")
    echo "== $suite"
    cmake --preset "$suite" --log-level=WARNING >/dev/null
    "${prefix[@]}" cmake --build --preset "$suite" -- -j"$jobs" --quiet
    "${prefix[@]}" ctest --preset "$suite" -j"$jobs" --no-tests=error || failed+=("$suite")
done

if [ ${#failed[@]} -gt 0 ]; then
    echo "test.sh: failed: ${failed[*]}" >&2
    exit 1
fi
