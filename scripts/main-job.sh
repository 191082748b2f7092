#!/usr/bin/env bash
# Installs what the project needs, builds zpopup and runs it on the bundled
# example popup: writes the example's design to a fresh popup, reads it back,
# and shows both.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j2 --target zpopup
zpopup=build/apps/zpopup/zpopup

echo "== The bundled example: examples/Products"
"$zpopup" info examples/Products

out=build/example
mkdir -p "$out"
echo
echo "== Written again as $out/Products and read back"
"$zpopup" new "$out/Products" --title "Product Catalogue" \
  --level Department --level Category --level Product \
  --field Description:40 --field "Unit Price:10"
"$zpopup" info "$out/Products"
cmp examples/Products.ZPT "$out/Products.ZPT" && echo "(template identical to the bundled one)"
