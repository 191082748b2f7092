#!/usr/bin/env bash
# Builds the Debian package (zephyr-popup_VERSION_amd64.deb) in its own build
# folder, configured for /usr, and prints its path.
#   scripts/package.sh [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir=${1:-build-package}
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
  -DZEPHYR_BUILD_TESTS=OFF >/dev/null
cmake --build "$build_dir" -j2
(cd "$build_dir" && cpack -G DEB >/dev/null)
ls "$PWD/$build_dir"/zephyr-popup_*.deb
