#!/usr/bin/env bash
# Installs what is missing, builds the program, tests and benchmarks, and runs the whole test
# suite twice: in the Release build, then in a build with AddressSanitizer and
# UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh test

jobs=$(nproc)
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DTALLOWMERE_BUILD_BENCH=ON >/dev/null
cmake --build build -j "$jobs"
ctest --test-dir build --output-on-failure -j "$jobs"

cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTALLOWMERE_SANITIZE=ON >/dev/null
cmake --build build-sanitize -j "$jobs"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0 \
UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir build-sanitize --output-on-failure -j "$jobs"
