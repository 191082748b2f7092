#!/usr/bin/env bash
# End-to-end checks of the zpopup command: output, files and exit codes.
set -u
zpopup=$1
examples=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

check() {  # check NAME EXPECTED ACTUAL
  if [ "$2" != "$3" ]; then
    echo "FAIL: $1"; echo "  expected: $2"; echo "  actual:   $3"
    failures=$((failures + 1))
  fi
}

"$zpopup" new "$work/Shop" --title "Corner Shop" --level Aisle --level Shelf \
  --field Description:30 --field Price:8
check "new exits 0" 0 $?
check "template bytes" \
  "$(printf '"Corner Shop"\r\n2\r\n2,"Aisle"\r\n2,"Shelf"\r\n2\r\n5,30,"Description"\r\n35,8,"Price"\r\n' | od -c)" \
  "$(od -c < "$work/Shop.ZPT")"

expected_info='Title: Corner Shop
Levels: 2
  1. Aisle
  2. Shelf
Fields: 3
  1. Popup Code (4)
  2. Description (30)
  3. Price (8)'
check "info by base name" "$expected_info" "$("$zpopup" info "$work/Shop")"
check "info by .ZPT path" "$expected_info" "$("$zpopup" info "$work/Shop.ZPT")"
check "bundled example reads" 0 "$("$zpopup" info "$examples/Products" > /dev/null; echo $?)"

"$zpopup" info "$work/Absent" 2> "$work/err"
check "missing popup exits 2" 2 $?
check "missing popup names the file" 1 "$(grep -c "Absent.ZPT" "$work/err")"
check "one error line" 1 "$(wc -l < "$work/err")"

"$zpopup" frobnicate > /dev/null 2>&1
check "unknown command exits 2" 2 $?
"$zpopup" new "$work/X" --level Q > /dev/null 2>&1
check "new without --title exits 2" 2 $?
"$zpopup" new "$work/X" --title T --level Q --field Name:0 > /dev/null 2>&1
check "zero-width field exits 2" 2 $?
check "help exits 0" 0 "$("$zpopup" info --help > /dev/null; echo $?)"

if [ "$failures" -eq 0 ]; then echo "zpopup CLI: all checks passed"; fi
exit $((failures > 0))
