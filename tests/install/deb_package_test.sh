#!/usr/bin/env bash
# The Debian package installs as apt would install it: unpacked into a scratch
# root, every dependency it declares is a Debian package (installed here),
# every program and library finds its libraries, the programs run, and a host
# built with find_package(ZephyrPopup) against the unpacked /usr works.
#   deb_package_test.sh DEB SOURCE_DIR
set -euo pipefail
deb=$1
source_dir=$2
expected="Product Catalogue"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
fail() { echo "FAIL: $*"; exit 1; }

dpkg-deb --info "$deb" >/dev/null
[ "$(dpkg-deb -f "$deb" Package)" = zephyr-popup ] || fail "the package is not zephyr-popup"
dpkg -x "$deb" "$root"

# Every declared dependency names a package apt knows (this machine has them).
depends=$(dpkg-deb -f "$deb" Depends)
[ -n "$depends" ] || fail "the package declares no dependencies"
for package in $(tr ',' '\n' <<<"$depends" | sed 's/(.*)//; s/|.*//; s/ //g'); do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
    fail "dependency $package is not a Debian package installed here"
done

for file in usr/bin/zpopup usr/bin/zpopup-edit usr/share/applications/zpopup-edit.desktop \
  usr/share/mime/packages/zephyr-popup.xml usr/share/man/man1/zpopup.1 \
  usr/share/man/man1/zpopup-edit.1 usr/share/bash-completion/completions/zpopup \
  usr/share/icons/hicolor/scalable/apps/zpopup-edit.svg usr/share/doc/zephyr-popup/editor.md \
  usr/include/zephyr/runtime/popup_class.h; do
  [ -e "$root/$file" ] || fail "the package has no /$file"
done

# Programs and libraries find every library: their own beside them, the rest
# from the system.
while IFS= read -r binary; do
  if ldd "$binary" | grep -q "not found"; then
    ldd "$binary" | grep "not found"
    fail "${binary#"$root"} misses a library"
  fi
done < <(find "$root/usr/bin" "$root/usr/lib" -type f \( -perm -u+x -o -name '*.so*' \))

[ "$("$root/usr/bin/zpopup" --version)" = "zpopup 6.1.273" ] || fail "zpopup --version"
cp "$source_dir"/examples/Products.Z* "$work/"
title=$("$root/usr/bin/zpopup" info "$work/Products" | sed -n 's/^Title: *//p')
[ "$title" = "$expected" ] || fail "zpopup info printed '$title'"
QT_QPA_PLATFORM=offscreen "$root/usr/bin/zpopup-edit" --screenshot "$work/shot.png" \
  "$work/Products" 2>/dev/null
[ -s "$work/shot.png" ] || fail "zpopup-edit --screenshot wrote no picture"

cmake -S "$source_dir/examples/editor_host" -B "$work/host" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF >"$work/log" 2>&1 ||
  { cat "$work/log"; fail "the host does not configure against the package"; }
found=$(sed -n 's/^ZephyrPopup_DIR:PATH=//p' "$work/host/CMakeCache.txt")
[[ "$found" == "$root"/usr/* ]] || fail "the host found ZephyrPopup in '$found'"
cmake --build "$work/host" >"$work/log" 2>&1 || { cat "$work/log"; fail "the host does not build"; }
title=$(QT_QPA_PLATFORM=offscreen "$work/host/editor_host" --check "$work/Products" 2>/dev/null |
  head -n 1)
[ "$title" = "$expected" ] || fail "the host printed '$title'"
echo "ok: $(basename "$deb") installs, runs and builds a host"
