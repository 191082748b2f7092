#!/usr/bin/env bash
# Installs what the project needs, builds zpopup and runs it on the bundled
# example popup: shows its tree, its design and the result of its checks.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j2 --target zpopup
zpopup=build/apps/zpopup/zpopup

"$zpopup" show examples/Products
echo
"$zpopup" info examples/Products
"$zpopup" check examples/Products
