#!/usr/bin/env bash
# Makes the user guide's pictures of the editor's questions about shared
# popups by using zpopup-edit as people do, in a real (virtual) display: a
# second editor on an open popup, a save over another program's, and the
# start after an editor was killed. Needs Xvfb, openbox, xdotool and
# ImageMagick; also a try-out of the three guards.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --build build -j2 --target zpopup-edit zpopup
edit=$PWD/build/apps/zpopup-edit/zpopup-edit
zpopup=$PWD/build/apps/zpopup/zpopup
out=$PWD/docs/images
work=$(mktemp -d)
export XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config DISPLAY=:9
pids=()
cleanup() {
  kill "${pids[@]}" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

Xvfb :9 -screen 0 1280x800x24 >/dev/null 2>&1 &
pids+=($!)
sleep 1
openbox >/dev/null 2>&1 &
pids+=($!)
sleep 1

start_editor() {  # start_editor POPUP: the new editor's pid in $editor_pid
  "$edit" "$1" >/dev/null 2>&1 &
  editor_pid=$!
  pids+=("$editor_pid")
}
window() { xdotool search --sync --onlyvisible --name "$1" | head -n 1; }
shoot() { sleep 0.5; import -frame -window "$(window "$1")" "$out/$2"; }
answer() { xdotool windowactivate --sync "$(window "$1")" key --clearmodifiers "$2"; sleep 0.5; }

cp examples/Products.ZPT examples/Products.ZPD "$work/"

# Another editor has the popup open.
start_editor "$work/Products"
first=$editor_pid
window "^Products"
start_editor "$work/Products"
shoot "Popup In Use" question-in-use.png
answer "Popup In Use" Return  # Open Read-Only, the default
window "read-only" >/dev/null
kill "$editor_pid"

# Another program saves while the first editor has unsaved changes.
answer "^Products" Down
answer "^Products" Delete
answer "Confirm Delete" alt+y
"$zpopup" export "$work/Products" "$work/products.csv" >/dev/null || true
"$zpopup" import "$work/products.csv" "$work/Products" --structure popup >/dev/null
window "changed on disk" >/dev/null
answer "changed on disk" ctrl+s
shoot "Popup Changed on Disk" question-changed-on-disk.png
answer "Popup Changed on Disk" Escape

# The editor is killed with those changes unsaved; the next start offers them.
kill -KILL "$first"
start_editor "$work/Products"
shoot "Recover Unsaved Changes" question-recover.png
answer "Recover Unsaved Changes" Return
window "Products\*" >/dev/null
echo "pictures written to $out"
