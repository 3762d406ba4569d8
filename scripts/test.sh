#!/usr/bin/env bash
# Sets everything up on a fresh machine, builds, and runs every test: first the normal build, then the
# AddressSanitizer + UndefinedBehaviorSanitizer build.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)

scripts/setup.sh build
ctest --test-dir build --output-on-failure -j "$jobs"

scripts/setup.sh build-asan -DVELLORU_SANITIZE=address,undefined -DCMAKE_BUILD_TYPE=Debug
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0 \
UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest --test-dir build-asan --output-on-failure -j "$jobs"
