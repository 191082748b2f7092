#!/usr/bin/env bash
# Installs every Debian package the project needs to build, test and benchmark.
# Safe to run again: apt-get skips what is already installed.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config git
  libgtest-dev libgmock-dev libbenchmark-dev
  libdbus-1-dev dbus-daemon dbus-bin
  clang libclang-rt-14-dev
  python3 libshp-dev
  libzip-dev libexpat1-dev libxlsxwriter-dev
  # The editor: Qt 6 (Qt's CMake package looks for OpenGL), the platform
  # plugins, Designer's library for the widget's Designer plugin (its CMake
  # package needs Qt6OpenGL's, which qt6-tools-dev does not pull in), a font
  # for offscreen rendering and pdftotext for printed output.
  qt6-base-dev qt6-qpa-plugins qt6-tools-dev libqt6opengl6-dev libgl-dev
  fonts-dejavu-core poppler-utils
  # The running spreadsheet program over UNO, and a headless Calc for its tests.
  libreoffice-dev libreoffice-dev-common ure libreoffice-calc-nogui
  # Checks of the desktop entry, the AppStream description and the manual pages.
  desktop-file-utils appstream man-db shared-mime-info
)

sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  "${sudo_cmd[@]}" apt-get update -q
  "${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
