#!/usr/bin/env bash
# Resident memory and CPU time of `tallowmere --headless` with every monitor sampling (the
# server switch on), after a given number of seconds (default 60).
# Usage: bench/headless-memory.sh [build-dir] [seconds]
set -euo pipefail
build=${1:-build}
seconds=${2:-60}
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data \
  "$build/tallowmere" --headless --server on --record on --port 18765 2>/dev/null &
pid=$!
sleep "$seconds"
rss=$(awk '/^VmRSS/ {print $2}' "/proc/$pid/status")
hwm=$(awk '/^VmHWM/ {print $2}' "/proc/$pid/status")
ticks=$(awk '{print $14 + $15}' "/proc/$pid/stat")
kill -TERM "$pid"
wait "$pid" || true
echo "after ${seconds}s: resident ${rss} kB (peak ${hwm} kB), CPU time $((ticks * 1000 / $(getconf CLK_TCK))) ms"
