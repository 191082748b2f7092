#!/usr/bin/env bash
# Remakes the PNG sizes of the editor's icon from packaging/zpopup-edit.svg
# (needs ImageMagick's convert): run after changing the SVG.
set -euo pipefail
cd "$(dirname "$0")/.."
for size in 16 22 24 32 48 64 128 256; do
  convert -background none -density 384 packaging/zpopup-edit.svg -resize "${size}x${size}" \
    "packaging/icons/zpopup-edit-${size}.png"
done
