#!/usr/bin/env bash
# Installs the build tree into a temporary prefix and builds programs against
# that prefix alone: the example hosts through the CMake package, a small one
# through pkg-config. Each opens the example popup and prints its title.
#   install_package_test.sh CMAKE BUILD_DIR SOURCE_DIR WITH_EDITOR CXX [FLAGS]
# FLAGS are the sanitizer flags the libraries were built with.
set -euo pipefail
cmake=$1
build_dir=$2
source_dir=$3
with_editor=$4
cxx=$5
flags=${6:-}
expected="Product Catalogue"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
log=$work/log

quiet() {  # runs a command, showing its output only when it fails
  "$@" >"$log" 2>&1 || { cat "$log"; echo "FAIL: $*"; exit 1; }
}

check_title() {  # check_title WHAT OUTPUT
  local first
  first=$(head -n 1 <<<"$2")
  if [ "$first" != "$expected" ]; then
    echo "FAIL: $1 printed '$first', expected '$expected'"
    exit 1
  fi
  echo "ok: $1"
}

build_host() {  # build_host NAME: configures and builds examples/NAME
  quiet "$cmake" -S "$source_dir/examples/$1" -B "$work/$1" -G Ninja \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags" \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
  local found
  found=$(sed -n 's/^ZephyrPopup_DIR:PATH=//p' "$work/$1/CMakeCache.txt")
  case "$found" in
    "$prefix"/*) ;;
    *) echo "FAIL: $1 found ZephyrPopup in '$found', not under $prefix"; exit 1 ;;
  esac
  quiet "$cmake" --build "$work/$1" -j2
}

quiet "$cmake" --install "$build_dir" --prefix "$prefix"
# The library's internals are not installed.
for internal in runtime/item_access.h excel/sheet_scans.h editor/data_grid_model.h \
  editor/design_list_models.h; do
  [ ! -e "$prefix/include/zephyr/$internal" ] || { echo "FAIL: installed $internal"; exit 1; }
done
# Opening may leave lock or work files beside the popup; keep them out of the tree.
mkdir "$work/popups"
cp "$source_dir"/examples/Products.Z* "$work/popups/"
popup=$work/popups/Products

check_title "installed zpopup" "$("$prefix/bin/zpopup" info "$popup" | sed -n 's/^Title: *//p')"

build_host runtime_host
check_title "runtime_host" "$("$work/runtime_host/runtime_host" "$popup" --export "$work/p.xlsx")"
[ -s "$work/p.xlsx" ] || { echo "FAIL: runtime_host wrote no workbook"; exit 1; }

pc=$(find "$prefix" -name zephyr-popup.pc)
export PKG_CONFIG_PATH=${pc%/*}
libdir=$(pkg-config --variable=libdir zephyr-popup)
cat >"$work/title.cpp" <<'CPP'
#include <iostream>
#include "zephyr/runtime/popup_class.h"
int main(int, char** argv) {
  zephyr::PopupClass popup;
  popup.PopupPath(argv[1]);
  popup.DataSource(argv[2]);
  popup.LoadTemplate();
  std::cout << popup.Title() << "\n";
}
CPP
# shellcheck disable=SC2046,SC2086  # word splitting of the flags is intended
quiet "$cxx" -std=c++20 $flags "$work/title.cpp" -o "$work/title" \
  $(pkg-config --cflags --libs zephyr-popup) -Wl,-rpath,"$libdir"
check_title "pkg-config zephyr-popup" "$("$work/title" "$work/popups" Products)"

if [ "$with_editor" = 1 ]; then
  for file in applications/zpopup-edit.desktop mime/packages/zephyr-popup.xml \
    metainfo/io.github.zephyrpopup.Editor.metainfo.xml icons/hicolor/scalable/apps/zpopup-edit.svg \
    icons/hicolor/48x48/apps/zpopup-edit.png; do
    [ -s "$prefix/share/$file" ] || { echo "FAIL: share/$file is not installed"; exit 1; }
  done
  export QT_QPA_PLATFORM=offscreen
  # Qt's own allocations outlive main; leaks are the unit tests' business.
  export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0}
  build_host editor_host
  check_title "editor_host" "$("$work/editor_host/editor_host" --check "$popup")"
  # shellcheck disable=SC2046,SC2086
  quiet "$cxx" -std=c++20 $flags "$source_dir/examples/editor_host/main.cpp" \
    -o "$work/editor_pc" $(pkg-config --cflags --libs zephyr-popup-editor) -Wl,-rpath,"$libdir"
  check_title "pkg-config zephyr-popup-editor" "$("$work/editor_pc" --check "$popup")"
fi
