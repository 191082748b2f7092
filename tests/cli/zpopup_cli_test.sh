#!/usr/bin/env bash
# End-to-end checks of the zpopup command: output, files and exit codes.
set -u
zpopup=$1
examples=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
checks=0

check() {  # check NAME EXPECTED ACTUAL
  checks=$((checks + 1))
  if [ "$2" != "$3" ]; then
    echo "FAIL: $1"; echo "  expected: $2"; echo "  actual:   $3"
    failures=$((failures + 1))
  fi
}

# new writes both files through the save path.
"$zpopup" new "$work/Shop" --title "Corner Shop" --level Aisle --level Shelf \
  --field Description:30 --field Price:8
check "new exits 0" 0 $?
check "template bytes" \
  "$(printf '"Corner Shop"\r\n2\r\n2,"Aisle"\r\n2,"Shelf"\r\n2\r\n5,30,"Description"\r\n35,8,"Price"\r\n' | od -c)" \
  "$(od -c < "$work/Shop.ZPT")"
check "data table: header, 3 descriptors, terminator, end byte" 130 "$(stat -c %s "$work/Shop.ZPD")"
check "only the two files" "Shop.ZPD Shop.ZPT" "$(cd "$work" && echo *)"

"$zpopup" new "$work/Shop" --title Again --level Q 2> "$work/err"
check "new refuses an existing popup" 2 $?
check "the existing popup is kept" "Corner Shop" "$(head -c 13 "$work/Shop.ZPT" | tr -d '"')"

expected_info='Title: Corner Shop
Levels: 2
  1. Aisle
  2. Shelf
Fields: 3
  1. Popup Code (4)
  2. Description (30)
  3. Price (8)
Items: 0
Depth: 0'
check "info by base name" "$expected_info" "$("$zpopup" info "$work/Shop")"
check "info by a path in another case" "$expected_info" "$("$zpopup" info "$work/Shop.zpt")"
printf 'Ann Other,ann,desk-7,01.02.2026 10:00,zpopup-edit:7;\n' > "$work/.~lock.Shop.ZPT#"
check "info names who has it open" "In use: Opened by Ann Other on desk-7 since 01.02.2026 10:00" \
  "$("$zpopup" info "$work/Shop" | tail -n 1)"
rm "$work/.~lock.Shop.ZPT#"

# The bundled example: show, info, dump and check agree.
show=$("$zpopup" show "$examples/Products")
check "show exits 0" 0 $?
check "show: title first" "Product Catalogue" "$(echo "$show" | head -n 1)"
check "show: a top-level item" "10  Fresh Produce |  " "$(echo "$show" | sed -n 2p)"
check "show: a product, indented" "    10  Apples, Braeburn (1 kg) | 2.49" "$(echo "$show" | sed -n 4p)"
check "show: one line per item" 35 "$(echo "$show" | wc -l)"
check "info counts items and depth" "Items: 34
Depth: 3" "$("$zpopup" info "$examples/Products" | tail -n 2)"
dump=$("$zpopup" dump "$examples/Products" --format json)
check "dump starts with the design" \
  '{"title": "Product Catalogue", "levels": ["Department", "Category", "Product"], "fields": [{"name": "Popup Code", "length": 6}, {"name": "Description", "length": 40}, {"name": "Unit Price", "length": 10}], "items": [{"key": "    10", "level": 1, "values": ["Fresh Produce", " "], "children": [{"key": "10  10", "level": 2,' \
  "$(echo "$dump" | cut -c 1-322)"
if command -v python3 > /dev/null; then
  check "dump is valid JSON" 34 "$(echo "$dump" | python3 -c '
import json, sys
def count(items): return sum(1 + count(i["children"]) for i in items)
print(count(json.load(sys.stdin)["items"]))')"
fi
"$zpopup" check "$examples/Products" > "$work/out"
check "check of a sound popup exits 0" 0 $?
check "check of a sound popup says so" "no problems found" "$(cat "$work/out")"

# check reports problems and exits 1.
cp "$examples/Products.ZPT" "$work/Bad.ZPT"
cp "$examples/Products.ZPD" "$work/Bad.ZPD"
# Overwrite the key of the first record ("    10") with a key that has no parent.
printf '77  01' | dd of="$work/Bad.ZPD" bs=1 seek=$((32 * 3 + 33 + 1)) conv=notrunc status=none
"$zpopup" check "$work/Bad" > "$work/out"
check "check with problems exits 1" 1 $?
check "check names the row and the problem" 1 \
  "$(grep -c "Bad.ZPD: row 1: key '77  01' has no parent (no item '77')" "$work/out")"
"$zpopup" info "$work/Bad" 2> "$work/err" > /dev/null
check "info tells how many rows were left out" 1 "$(grep -c "Bad.ZPD: 10 rows were left out" "$work/err")"

# Bad input: one clear line on stderr, exit 2.
"$zpopup" show "$work/Absent" 2> "$work/err"
check "missing popup exits 2" 2 $?
check "missing popup is named" 1 "$(grep -c "Absent" "$work/err")"
check "one error line" 1 "$(wc -l < "$work/err")"
printf 'garbage' > "$work/Junk.ZPD"
cp "$work/Shop.ZPT" "$work/Junk.ZPT"
"$zpopup" show "$work/Junk" 2> "$work/err"
check "a table that is no table exits 2" 2 $?
check "its error names the table" "zpopup: $work/Junk.ZPD: Invalid dBase File Type" "$(cat "$work/err")"
printf '"Cut short"\r\n' > "$work/Cut.ZPT"
"$zpopup" info "$work/Cut" 2> "$work/err"
check "a broken template exits 2" 2 $?
check "its error names the template" 1 "$(grep -c "^zpopup: $work/Cut.ZPT: " "$work/err")"
"$zpopup" check "$work/Junk" 2> "$work/err"
check "check names the table too" "zpopup: $work/Junk.ZPD: Invalid dBase File Type" "$(cat "$work/err")"

# export and import: the bundled example goes to a workbook and comes back the same.
"$zpopup" export "$examples/Products" "$work/products.xlsx" 2> "$work/err"
check "export exits 0" 0 $?
check "export reports its rows" "zpopup: wrote 22 rows to $work/products.xlsx" "$(cat "$work/err")"
"$zpopup" import "$work/products.xlsx" "$work/Copy" < /dev/null 2> "$work/err"
check "import into a new popup exits 0" 0 $?
check "the imported tree equals the exported one" "$(echo "$show" | tail -n +2)" \
  "$("$zpopup" show "$work/Copy" | tail -n +2)"

printf 'Key,Level,Note\r\n0101,a,x\r\n01A1,b,y\r\n' > "$work/bad.csv"
"$zpopup" import "$work/bad.csv" "$work/Copy" --structure sheet 2> "$work/err"
check "a broken sheet rule exits 1" 1 $?
check "the rule's message is printed as it stands" 1 "$(grep -c 'Key Not Numeric: Key Not Numeric. A non numerical character was found in the key on row 2. Please refer to ZephyrPopup Excel Import Rules in Help.' "$work/err")"
check "a failed import keeps the popup" "$(echo "$show" | tail -n +2)" "$("$zpopup" show "$work/Copy" | tail -n +2)"

printf ',Group,Item,Note\n,A,one,x\n,A,two,y\n' > "$work/nokeys.csv"
"$zpopup" import "$work/nokeys.csv" "$work/Fresh" < /dev/null 2> "$work/err"
check "a sheet without keys and no --levels exits 1" 1 $?
check "it says what it needs" 1 "$(grep -c 'Input Level Count' "$work/err")"
"$zpopup" import "$work/nokeys.csv" "$work/Fresh" --levels 2 < /dev/null
check "with --levels it imports" "Items: 3" "$("$zpopup" info "$work/Fresh" | grep Items)"
# An import does not save over a popup another program saved while it ran:
# here while it asks for its level count on a terminal (script's).
mkfifo "$work/answer"
script -qefc "'$zpopup' import '$work/nokeys.csv' '$work/Fresh' --structure sheet" /dev/null \
  < "$work/answer" > "$work/err" &
importer=$!
exec 3> "$work/answer"
sleep 1
"$zpopup" import "$work/nokeys.csv" "$work/Fresh" --levels 1 --structure sheet 2> /dev/null
echo 2 >&3
exec 3>&-
wait "$importer"
check "an import over another's save exits 1" 1 $?
check "it says why and saves nothing" "1 Levels: 1" \
  "$(grep -c 'saved the popup while the import ran' "$work/err") $("$zpopup" info "$work/Fresh" | grep -o 'Levels: [0-9]*')"
"$zpopup" import "$work/missing.xlsx" "$work/Fresh" 2> "$work/err"
check "an unreadable workbook exits 2" 2 $?
check "its first line names it and the reason" "zpopup: $work/missing.xlsx: no such file" \
  "$(head -n 1 "$work/err")"
"$zpopup" import "$work/nokeys.csv" "$work/none/Fresh" --levels=2 2> "$work/err"
check "importing into a missing folder says so" "zpopup: $work/none: No such folder" "$(cat "$work/err")"
"$zpopup" import - "$work/Piped" --levels=2 < "$work/nokeys.csv" 2> "$work/err"
check "- reads the workbook from standard input" "Items: 3" "$("$zpopup" info "$work/Piped" | grep Items)"
check "import ends with one summary line" \
  "zpopup: imported - into $work/Piped: 3 items, 2 levels, 3 fields; 0 items replaced; 0 values converted to WINDOWS-1252" \
  "$(cat "$work/err")"
check "export - writes CSV to standard output" "Popup Code,Group,Item,Note|1010,A,one,x" \
  "$("$zpopup" export "$work/Piped" - 2> /dev/null | head -n 2 | tr -d '\r' | paste -sd '|')"
"$zpopup" export "$work/Piped" "$work/piped.ods" 2> "$work/err"
check "export refuses other formats" "2 0" "$? $(ls "$work" | grep -c piped.ods)"
cp "$work/nokeys.csv" "$work/'Tis the season.csv"  # an import names a new popup after its file
"$zpopup" import "$work/'Tis the season.csv" "$work/Season" --levels 2 2> /dev/null
"$zpopup" export "$work/Season" "$work/season.xlsx" 2> /dev/null
check "a title that is no sheet name still exports" 0 $?

# Text the code page cannot hold is named; --strict refuses it.
"$zpopup" new "$work/Town" --title "Łódź" --level Q --field N:5 2> "$work/err"
check "unencodable text is named" \
  "zpopup: warning: the title: 'Łódź' cannot be written in WINDOWS-1252; it would be saved as '?ód?'" \
  "$(cat "$work/err")"
"$zpopup" new "$work/Town2" --strict --title "Łódź" --level Q --field N:5 2> /dev/null
check "--strict refuses it and saves nothing" "1 0" "$? $(ls "$work" | grep -c Town2)"

"$zpopup" frobnicate > /dev/null 2>&1
check "unknown command exits 2" 2 $?
"$zpopup" new "$work/X" --level Q > /dev/null 2>&1
check "new without --title exits 2" 2 $?
for field in Name:0 Name:255 Name:x; do
  "$zpopup" new "$work/X" --title T --level Q --field $field > /dev/null 2>&1
  check "new refuses the field $field" 2 $?
done
"$zpopup" new "$work/X" --title T --level Q --field Name:5 --field name:4 2> "$work/err"
check "new refuses two fields of one name" 2 $?
"$zpopup" new "$work/X" --title T --level 1Q --field Name:5 2> "$work/err"
check "new applies the design rules" 1 \
  "$(grep -c 'The First Character of the level name is numeric' "$work/err")"
"$zpopup" show "$work/Shop" --bogus 2> "$work/err"
check "an unknown option is named" "2 zpopup: unknown option --bogus" "$? $(head -n 1 "$work/err")"
"$zpopup" info "$work" 2> "$work/err"
check "a folder is no popup" "2 1" "$? $(grep -c 'is a folder' "$work/err")"
check "help COMMAND" "usage: zpopup import" "$("$zpopup" help import | head -n 1 | cut -c 1-20)"
check "--version" 1 "$("$zpopup" --version | grep -c '^zpopup [0-9]')"
"$zpopup" dump "$work/Shop" --format xml > /dev/null 2>&1
check "unknown dump format exits 2" 2 $?
for command in show dump info check new import export; do
  "$zpopup" $command --help > /dev/null
  check "$command --help exits 0" 0 $?
done

# calc-setup puts the pipe into a LibreOffice profile, once however often it
# runs (unless an office of this user runs, when it leaves the profile alone).
if ! pgrep -x -r R,S,D,I soffice.bin >/dev/null 2>&1; then
  settings=$work/config/libreoffice/4/user/registrymodifications.xcu
  XDG_CONFIG_HOME=$work/config ZEPHYR_CALC_PIPE=first "$zpopup" calc-setup 2>/dev/null
  XDG_CONFIG_HOME=$work/config ZEPHYR_CALC_PIPE=clitest "$zpopup" calc-setup 2>/dev/null
  check "calc-setup exits 0" 0 $?
  check "one connection setting, the last pipe" \
    "1 pipe,name=clitest;urp;StarOffice.ComponentContext" \
    "$(grep -c ooSetupConnectionURL "$settings") $(sed -n 's/.*<value>\(pipe[^<]*\)<.*/\1/p' "$settings")"
fi
"$zpopup" calc-setup extra >/dev/null 2>&1
check "calc-setup takes no arguments" 2 $?

echo "$((checks - failures)) passed, $failures failed"
exit $((failures > 0))
