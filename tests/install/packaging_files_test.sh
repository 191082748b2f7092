#!/usr/bin/env bash
# The files that make ZephyrPopup a desktop application: the desktop entry and
# the AppStream description pass their validators, the popup file type is one
# the MIME database accepts, and the bash completion offers commands, options
# and popup names; the manual pages made at build time format without a warning.
#   packaging_files_test.sh SOURCE_DIR MAN_DIR
set -euo pipefail
packaging=$1/packaging
man_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

desktop-file-validate "$packaging/zpopup-edit.desktop"
appstreamcli validate --no-net "$packaging/io.github.zephyrpopup.Editor.metainfo.xml" >/dev/null

mkdir -p "$work/mime/packages"
cp "$packaging/zephyr-popup.xml" "$work/mime/packages/"
update-mime-database "$work/mime" >/dev/null 2>&1
for glob in '*.ZPT' '*.zpt'; do
  grep -qF "application/x-zephyr-popup:$glob" "$work/mime/globs" ||
    { echo "FAIL: $glob is not a popup in the MIME database"; exit 1; }
done

mkdir -p "$work/popups/sub"
: >"$work/popups/Products.ZPT"
: >"$work/popups/Products.ZPD"
: >"$work/popups/sub/notes.txt"
complete_line() {  # complete_line WORD...: what completing the last word offers
  (cd "$work/popups" && bash -c 'shopt -s extglob
    source "$0"
    COMP_WORDS=("${@}"); COMP_CWORD=$(($# - 1))
    _zpopup 2>/dev/null
    echo "${COMPREPLY[*]}"' "$packaging/zpopup.bash-completion" "$@")
}
expect() {  # expect WANTED WORD...
  local wanted=$1 got
  shift
  got=$(complete_line "$@")
  [ "$got" = "$wanted" ] || { echo "FAIL: completing '$*' offered '$got', not '$wanted'"; exit 1; }
}
expect "info import" zpopup i
expect "Products" zpopup show Pr
expect "sub/ Products" zpopup check ""
expect "--structure --strict" zpopup import book.xlsx Products --s
expect "check calc-setup" zpopup c
expect "Products" zpopup import --calc Pro
expect "popup sheet" zpopup import book.xlsx Products --structure ""
for page in "$man_dir"/*.1; do
  warnings=$(MANWIDTH=80 man --warnings -l "$page" 2>&1 >/dev/null)
  [ -z "$warnings" ] || { echo "FAIL: ${page##*/}: $warnings"; exit 1; }
  MANWIDTH=80 man -l "$page" | grep -q "^NAME" || { echo "FAIL: ${page##*/} has no NAME"; exit 1; }
done
[ -e "$man_dir/zpopup.1" ] || { echo "FAIL: no manual page of zpopup"; exit 1; }
echo "ok: desktop entry, AppStream description, MIME type completion and manual pages"
