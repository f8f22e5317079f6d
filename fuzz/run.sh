#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each over its seed corpus.
#   fuzz/run.sh [executions] [target...]
# executions: runs per target (default 100000). FUZZ_SECONDS caps each target's time as well;
# FUZZ_TIMEOUT (seconds, default 10) is how long one input may take before it counts as a hang.
# New inputs the fuzzer finds go to build-fuzz/corpus/<target>, crashes to build-fuzz/findings/.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
build=$root/build-fuzz
runs=${1:-100000}
shift || true
targets=("$@")
[[ ${#targets[@]} -eq 0 ]] && targets=(http_request mcp_dispatch update_feed proc_parsers sock_diag)

if [[ ! -f $build/build.ninja ]]; then
  CXX=clang++ cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
fi
cmake --build "$build" -j2 --target "${targets[@]/#/fuzz_}"

mkdir -p "$build/findings"
status=0
for target in "${targets[@]}"; do
  mkdir -p "$build/corpus/$target"
  log=$build/findings/$target.log
  limit=()
  [[ -n ${FUZZ_SECONDS:-} ]] && limit=(-max_total_time="$FUZZ_SECONDS")
  echo "== $target: $runs executions"
  if ! ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
      "$build/fuzz_$target" -runs="$runs" "${limit[@]}" -timeout="${FUZZ_TIMEOUT:-10}" -rss_limit_mb=2048 -print_final_stats=1 \
      -artifact_prefix="$build/findings/$target-" "$build/corpus/$target" "$here/corpus/$target" >"$log" 2>&1; then
    status=1
    echo "   FAILED, see $log"
  fi
  grep -E '^stat::number_of_executed_units|^stat::peak_rss_mb|^Done|ERROR|SUMMARY' "$log" | sed 's/^/   /' || true
done
exit $status
