#!/usr/bin/env bash
# Remakes the pictures of docs/ from the bundled example popup, with the
# editor rendering offscreen: run after changing what the editor shows.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --build build -j2 --target zpopup-edit
edit=build/apps/zpopup-edit/zpopup-edit
out=docs/images
popup=examples/Products

"$edit" --screenshot "$out/editor-data.png" --view data "$popup"
"$edit" --screenshot "$out/editor-design.png" --view design "$popup"
"$edit" --screenshot "$out/editor-add.png" --select 201020 "$popup"
"$edit" --screenshot "$out/editor-find.png" --find milk "$popup"
"$edit" --screenshot "$out/editor-move.png" --select 101020 --menu "$popup"
"$edit" --screenshot "$out/editor-undo.png" --select 101020 --delete --edit-menu "$popup"

pdf=$(mktemp --suffix=.pdf)
trap 'rm -f "$pdf"' EXIT
"$edit" --print-pdf "$pdf" "$popup"
pdftoppm -png -r 60 -f 1 -l 1 -singlefile "$pdf" "$out/printed-page"
