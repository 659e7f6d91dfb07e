#!/bin/bash
# SPDX-License-Identifier: MIT
# Sets up, builds and tests: the release suite, the address and undefined-behaviour suite, and under the thread
# sanitizer those suites that have more than one thread.
#
#   ./test.sh                        all three
#   ./test.sh release|asan|tsan ...  only these
#
# Every test runs in a private home and private XDG folders, without the person's display and sound server.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"

[ $# -gt 0 ] || set -- release asan tsan
for suite in "$@"; do
    if ! [[ $suite =~ ^(release|asan|tsan)$ ]]; then
        echo "usage: test.sh [release|asan|tsan]..." >&2
        exit 2
    fi
done

./setup.sh test

TRV_TEST_HOME=$(mktemp -d "${TMPDIR:-/tmp}/trv-test.XXXXXX")
trap 'rm -rf "$TRV_TEST_HOME"' EXIT
export TRV_TEST_HOME CTEST_PARALLEL_LEVEL=${CTEST_PARALLEL_LEVEL:-$(nproc)}

# The sanitizers' shadow memory has fixed addresses that a fully randomised address space can collide with.
fixed_addresses=()
if setarch -R true 2>/dev/null; then
    fixed_addresses=(setarch -R)
fi

failed=()
for suite in "$@"; do
    "${fixed_addresses[@]}" cmake --workflow --preset "$suite" || failed+=("$suite")
done
if [ ${#failed[@]} -gt 0 ]; then
    echo "test.sh: failed: ${failed[*]}" >&2
    exit 1
fi
