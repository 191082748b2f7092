#!/usr/bin/env bash
# Counts the C++ lines of the production code and of the tests: lines with
# something on them besides white space and comments (// to the end of a line
# and /* ... */ blocks; string and character literals are skipped over so a
# "//" inside one does not end the line). Prints each area and the totals,
# then the tests as a share of the production code.
set -euo pipefail
cd "$(dirname "$0")/.."

production_areas=(table runtime support excel editor platform apps designer)

# Counted lines of the .cpp and .h files under the given folders.
count() {
  local files
  files=$(find "$@" -type f \( -name '*.cpp' -o -name '*.h' \) 2>/dev/null | sort)
  if [ -z "$files" ]; then
    echo 0
    return
  fi
  # shellcheck disable=SC2086
  awk '
    FNR == 1 { in_block = 0 }
    {
      line = $0; n = length(line); code = 0; quote = ""
      for (i = 1; i <= n; i++) {
        c = substr(line, i, 1); two = substr(line, i, 2)
        if (in_block) {
          if (two == "*/") { in_block = 0; i++ }
          continue
        }
        if (quote != "") {
          code = 1
          if (c == "\\") i++
          else if (c == quote) quote = ""
          continue
        }
        if (two == "//") break
        if (two == "/*") { in_block = 1; i++; continue }
        if (c == "\"" || c == "\047") { quote = c; code = 1; continue }
        if (c !~ /[ \t\r\f\v]/) code = 1
      }
      if (code) total++
    }
    END { print total + 0 }
  ' $files
}

printf '%-22s %8s\n' "area" "lines"
production=0
for area in "${production_areas[@]}"; do
  lines=$(count "$area")
  production=$((production + lines))
  printf '%-22s %8d\n' "$area" "$lines"
done

tests=0
for dir in tests/*/; do
  dir=${dir%/}
  lines=$(count "$dir")
  [ "$lines" -eq 0 ] && continue
  tests=$((tests + lines))
  printf '%-22s %8d\n' "$dir" "$lines"
done

echo
printf '%-22s %8d\n' "production" "$production"
printf '%-22s %8d\n' "tests" "$tests"
awk -v t="$tests" -v p="$production" 'BEGIN {
  if (p == 0) { print "tests/production       n/a"; exit }
  printf "%-22s %7.1f%%\n", "tests/production", 100 * t / p
}'
