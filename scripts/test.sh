#!/usr/bin/env bash
# Sets everything up on a fresh machine, builds, and runs every test: first the normal build, then the
# AddressSanitizer + UndefinedBehaviorSanitizer build, then the parallel engines under ThreadSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)

VELLORU_TEST_TOOLS=1 scripts/setup.sh build
ctest --test-dir build --output-on-failure -j "$jobs"

scripts/setup.sh build-asan -DVELLORU_SANITIZE=address,undefined -DCMAKE_BUILD_TYPE=Debug
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0 \
UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest --test-dir build-asan --output-on-failure -j "$jobs"

# ThreadSanitizer: only the duplicate finder's tests, whose inventory, sampling and verify pools share
# state across threads. Kept to its one test binary so the step stays cheap.
cmake -S . -B build-tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELLORU_SANITIZE=thread >/dev/null
cmake --build build-tsan --target duplicates_tests
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
    ctest --test-dir build-tsan -R '^duplicates_tests\.(FileInventory|DuplicateEngine|DuplicateScan|HashCache)\.' \
    --output-on-failure -j "$jobs"
