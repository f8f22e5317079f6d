#!/usr/bin/env bash
# Installs what is missing, builds Release into build/ and starts Tallowmere.
# Arguments are passed on to the program (try ./run.sh --help).
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh run
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build --target tallowmere
exec build/tallowmere "$@"
