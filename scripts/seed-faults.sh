#!/usr/bin/env bash
# Seeds known faults into the sources one at a time and sees whether the
# tests catch them. For each fault of the list (scripts/faults.txt unless
# --list says otherwise) it checks that every line to replace occurs exactly
# once in its file, replaces the lines in the working tree, rebuilds BUILD_DIR,
# runs the tests named by the fault's pattern (or the whole suite with --all),
# records CAUGHT, MISSED, BUILD-FAILED, NO-TESTS (the pattern selects none) or
# NOT-APPLIED, and puts the file back with git checkout, also when the run is
# interrupted. A summary table follows; it compares each result with what the
# list expects. Logs go to BUILD_DIR/seed-faults/.
#
# usage: scripts/seed-faults.sh BUILD_DIR [--all] [--only ID[,ID...]] [--list FILE]
#        scripts/seed-faults.sh --check [--list FILE]
#
# --check only verifies that every fault of the list applies (no build, no
# tests). Exit status: 0 when every result agrees with the list, 1 when some
# do not, 2 for a usage error or an unusable list.
#
# The list: blocks of "key: value" lines, one block per fault, '#' lines are
# comments. The single blank after the colon is part of the syntax, so the
# value keeps its own indentation.
#   id: F01                      starts a fault
#   file: runtime/src/x.cpp      the file to change, from the top of the tree
#   find: <whole line>           a line of the file, exactly, indentation and all
#   replace: <whole line>        what that line becomes (empty: a blank line)
#   (further find/replace pairs: all are looked up in the unchanged file and
#    replaced together, so two lines can trade places)
#   tests: REGEX                 the ctest -R pattern of the tests that should catch
#                                it (none given: the whole suite)
#   build: TARGET...             the build targets those tests need (none given:
#                                everything), to keep each round short
#   expect: NAME | NONE          the test believed to catch it, or NONE
#   note: TEXT                   what the fault is
set -uo pipefail
cd "$(dirname "$0")/.."

usage() {
  sed -n 's/^# usage: /usage: /p; s/^#        scripts/       scripts/p' "$0" >&2
  exit 2
}

build_dir=""
run_all=false
check_only=false
only=""
list=scripts/faults.txt
while [ $# -gt 0 ]; do
  case $1 in
    --all) run_all=true ;;
    --check) check_only=true ;;
    --only) only=${2:-}; shift ;;
    --only=*) only=${1#--only=} ;;
    --list) list=${2:-}; shift ;;
    --list=*) list=${1#--list=} ;;
    -h|--help) usage ;;
    -*) echo "seed-faults: unknown option $1" >&2; usage ;;
    *)
      [ -n "$build_dir" ] && usage
      build_dir=$1
      ;;
  esac
  shift
done
if ! $check_only && [ -z "$build_dir" ]; then usage; fi
if ! $check_only && [ ! -f "$build_dir/CMakeCache.txt" ]; then
  echo "seed-faults: $build_dir is no configured build folder" >&2
  exit 2
fi
[ -f "$list" ] || { echo "seed-faults: no fault list $list" >&2; exit 2; }

work=$(mktemp -d)
current_file=""  # the source file changed right now, to be put back

restore() {
  if [ -n "$current_file" ]; then
    git checkout -- "$current_file"
    current_file=""
  fi
}
trap 'restore; rm -rf "$work"' EXIT

# --- Reading the list --------------------------------------------------------

ids=() files=() patterns=() expects=() notes=() targets=()
n=-1
pending_find=""
have_find=false
list_error() {
  echo "seed-faults: $list:$1: $2" >&2
  exit 2
}
line_no=0
while IFS= read -r line || [ -n "$line" ]; do
  line_no=$((line_no + 1))
  case $line in '' | '#'*) continue ;; esac
  key=${line%%:*}
  value=${line#*:}
  value=${value# }
  if [ "$key" != id ] && [ "$n" -lt 0 ]; then list_error "$line_no" "'$key' before the first id"; fi
  case $key in
    id)
      $have_find && list_error "$line_no" "fault ${ids[n]} ends after a find without its replace"
      n=$((n + 1))
      ids[n]=$value files[n]="" patterns[n]="" expects[n]="" notes[n]="" targets[n]=""
      : > "$work/$n.edits"
      ;;
    file) files[n]=$value ;;
    find)
      $have_find && list_error "$line_no" "two finds in a row"
      pending_find=$value
      have_find=true
      ;;
    replace)
      $have_find || list_error "$line_no" "a replace without its find"
      printf '%s\n%s\n' "$pending_find" "$value" >> "$work/$n.edits"
      have_find=false
      ;;
    tests) patterns[n]=$value ;;
    build) targets[n]=$value ;;
    expect) expects[n]=$value ;;
    note) notes[n]=$value ;;
    *) list_error "$line_no" "unknown key '$key'" ;;
  esac
done < "$list"
$have_find && list_error "$line_no" "the list ends after a find without its replace"
[ "$n" -ge 0 ] || list_error "$line_no" "no faults"
for i in $(seq 0 "$n"); do
  [ -n "${files[i]}" ] || list_error "-" "fault ${ids[i]} names no file"
  [ -s "$work/$i.edits" ] || list_error "-" "fault ${ids[i]} changes nothing"
  [ -n "${expects[i]}" ] || list_error "-" "fault ${ids[i]} expects nothing (name a test or NONE)"
done

# --- Applying one fault ------------------------------------------------------

# Prints why the edits of fault $1 cannot be applied, or nothing.
why_not_applicable() {
  local i=$1 file=${files[$1]}
  if [ ! -f "$file" ]; then
    echo "no file $file"
    return
  fi
  # Every line to replace must occur exactly once, and be named once.
  awk '
    NR == FNR {
      if (FNR % 2 == 1) {
        if ($0 in count) twice[$0] = 1
        count[$0] = 0
      }
      next
    }
    ($0 in count) { count[$0]++ }
    END {
      for (line in twice) printf "the list names this line twice: %s\n", line
      for (line in count) if (count[line] != 1) printf "found %d times: %s\n", count[line], line
    }
  ' "$work/$i.edits" "$file"
}

# Replaces the lines of fault $1 in its file, all at once.
apply_fault() {
  local i=$1 file=${files[$1]}
  awk '
    NR == FNR { if (FNR % 2 == 1) line = $0; else into[line] = $0; next }
    ($0 in into) { print into[$0]; next }
    { print }
  ' "$work/$i.edits" "$file" > "$work/changed" && cat "$work/changed" > "$file"
}

# --- Running -------------------------------------------------------------------

results=()
summary() {
  local i result agrees mismatches=0
  echo
  printf '%-5s %-12s %-6s %-34s %s\n' ID RESULT AGREES FILE "EXPECTED CATCHER"
  for i in $(seq 0 "$n"); do
    selected "${ids[i]}" || continue
    result=${results[i]:-NOT-RUN}
    case $result in
      CAUGHT) [ "${expects[i]}" != NONE ] && agrees=yes || agrees=NO ;;
      MISSED) [ "${expects[i]}" = NONE ] && agrees=yes || agrees=NO ;;
      APPLIES) agrees=- ;;
      NOT-RUN) agrees=- ;;
      *) agrees=NO ;;
    esac
    [ "$agrees" = NO ] && mismatches=$((mismatches + 1))
    printf '%-5s %-12s %-6s %-34s %s\n' "${ids[i]}" "$result" "$agrees" "${files[i]}" \
      "${expects[i]}"
  done
  echo
  local caught=0 missed=0
  for result in "${results[@]}"; do
    [ "$result" = CAUGHT ] && caught=$((caught + 1))
    [ "$result" = MISSED ] && missed=$((missed + 1))
  done
  echo "caught $caught, missed $missed, not agreeing with the list: $mismatches"
  return "$mismatches"
}

on_signal() {
  restore
  echo "seed-faults: interrupted; the sources are as they were" >&2
  summary
  exit 130
}
trap on_signal INT TERM HUP

selected() {
  [ -z "$only" ] && return 0
  case ",$only," in *",$1,"*) return 0 ;; esac
  return 1
}

logs=""
if ! $check_only; then
  logs=$build_dir/seed-faults
  mkdir -p "$logs"
fi

for i in $(seq 0 "$n"); do
  selected "${ids[i]}" || continue
  file=${files[i]}
  problem=$(why_not_applicable "$i")
  if [ -n "$problem" ]; then
    results[i]=NOT-APPLIED
    echo "${ids[i]}: cannot be applied to $file:" >&2
    echo "$problem" | sed 's/^/  /' >&2
    continue
  fi
  if $check_only; then
    results[i]=APPLIES
    continue
  fi
  if ! git diff --quiet -- "$file"; then
    results[i]=NOT-APPLIED
    echo "${ids[i]}: $file has changes of its own; it is left alone" >&2
    continue
  fi

  echo "== ${ids[i]}: ${notes[i]}"
  current_file=$file
  apply_fault "$i"
  build_targets=()
  # shellcheck disable=SC2206
  if ! $run_all && [ -n "${targets[i]}" ]; then build_targets=(--target ${targets[i]}); fi
  if ! cmake --build "$build_dir" -j2 "${build_targets[@]}" > "$logs/${ids[i]}.build.log" 2>&1; then
    results[i]=BUILD-FAILED
  else
    filter=()
    if ! $run_all && [ -n "${patterns[i]}" ]; then filter=(-R "${patterns[i]}"); fi
    # A pattern that selects no test is an error of the list, not a miss.
    ctest --test-dir "$build_dir" --no-tests=error --output-on-failure ${filter[@]+"${filter[@]}"} \
      > "$logs/${ids[i]}.test.log" 2>&1
    status=$?
    if [ "$status" -eq 0 ]; then
      results[i]=MISSED
    elif grep -q "No tests were found" "$logs/${ids[i]}.test.log"; then
      results[i]=NO-TESTS
    else
      results[i]=CAUGHT
    fi
  fi
  echo "   ${results[i]} (logs in $logs/${ids[i]}.*.log)"
  restore
done

if ! $check_only && [ ${#results[@]} -gt 0 ]; then
  echo "== rebuilding the unchanged sources"
  cmake --build "$build_dir" -j2 > "$logs/final.build.log" 2>&1 ||
    echo "seed-faults: the unchanged sources did not build; see $logs/final.build.log" >&2
fi

if summary; then exit 0; else exit 1; fi
