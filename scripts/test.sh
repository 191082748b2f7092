#!/usr/bin/env bash
# Installs what the project needs, builds everything and runs the whole test
# suite with CTest. Pass --sanitize to build and test with ASan and UBSan.
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=build
extra=()
if [ "${1:-}" = "--sanitize" ]; then
  build_dir=build-sanitize
  extra=(-DZEPHYR_SANITIZE=ON)
fi

bash scripts/install-deps.sh
cmake -S . -B "$build_dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${extra[@]}"
cmake --build "$build_dir" -j2
ctest --test-dir "$build_dir" -j2 --output-on-failure
# The Debian package: built in its own folder for /usr, then unpacked and used.
if [ "$build_dir" = build ]; then
  deb=$(bash scripts/package.sh build-package | tail -n 1)
  bash tests/install/deb_package_test.sh "$deb" "$PWD"
fi
