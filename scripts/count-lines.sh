#!/bin/sh
# Counts non-blank, non-comment C++ lines: tests/ against the program (every other folder but
# bench/ and fuzz/), and prints both and their ratio. A comment line is one that starts with
# "//", or lies in a block comment opened at the start of a line; code followed by a comment
# counts as code.
# Usage: scripts/count-lines.sh [-v]   (-v also prints the lines of each test folder)
set -eu
cd "$(dirname "$0")/.."

count() {
  find "$@" -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.hpp' -o -name '*.cc' -o -name '*.c' \) \
    -exec awk '
      FNR == 1 { inblock = 0 }
      inblock { if (index($0, "*/")) inblock = 0; next }
      /^[ \t]*\/\*/ { if (!index(substr($0, index($0, "/*") + 2), "*/")) inblock = 1; next }
      /^[ \t]*\/\// { next }
      /[^ \t\r]/ { n++ }
      END { print n + 0 }' {} + | awk '{ s += $1 } END { print s + 0 }'
}

program_dirs=""
for d in */; do
  d=${d%/}
  case "$d" in tests|bench|fuzz|build*) continue ;; esac
  program_dirs="$program_dirs $d"
done

tests=$(count tests)
# shellcheck disable=SC2086
program=$(count $program_dirs)
echo "tests:   $tests"
echo "program: $program"
awk -v t="$tests" -v p="$program" 'BEGIN { printf "ratio:   %.3f\n", (p ? t / p : 0) }'

if [ "${1:-}" = "-v" ]; then
  for d in tests/*/; do
    printf '  %-16s %s\n' "${d%/}" "$(count "$d")"
  done
fi
