#!/usr/bin/env bash
# Installs what building and testing need on Debian 12. Quick when everything is there; docs/dependencies.md says why each.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config ccache
  liblmdb-dev libcli11-dev nlohmann-json3-dev
  libcups2-dev libavahi-client-dev libpng-dev libtiff-dev libsane-dev
  libexpat1-dev libxml2-dev libusb-1.0-0-dev
  libgtest-dev libgmock-dev libumockdev-dev umockdev libbenchmark-dev python3
)
# What the tests print through, print to and are found by.
programs=(cups-daemon cups-client p910nd socat dbus-daemon avahi-daemon sane-utils iproute2)
packaging=(dpkg-dev file debootstrap)
case "${1:-build}" in
  build) ;;
  test) packages+=("${programs[@]}") ;;
  bench) packages+=("${programs[@]}" cups python3-matplotlib) ;;
  pictures) packages=(graphviz) ;;
  package) packages+=("${packaging[@]}") ;;
  vm) packages+=("${packaging[@]}" qemu-system-x86 e2fsprogs) ;;
  check) packages+=("${programs[@]}" clang clang-format clang-tidy libclang-rt-14-dev llvm) ;;
  *) echo "usage: setup.sh [build|test|bench|pictures|package|vm|check]" >&2; exit 2 ;;
esac

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "setup: please install: ${missing[*]}" >&2; exit 1; }
  sudo=sudo
fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
