#!/usr/bin/env bash
# Installs the Debian packages in a bare Debian root, spends a first day with them there, purges them and looks for
# what they left behind. Needs root, and the package mirror for the bare root and for what the packages depend on.
# usage: scripts/check-packages.sh DIRECTORY_OF_PACKAGES
set -euo pipefail

packages=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
. scripts/bare-root.sh
[ "$(id -u)" -eq 0 ] || { echo "check-packages: only root can make a root of its own" >&2; exit 1; }
work=$(mktemp -d)
root=$work/root
trap 'rm -rf --one-file-system "$work"' EXIT

say() { printf '\n== %s\n' "$*"; }
# Every file but those that any installation touches, and what the scheduler keeps of its own.
files() {
  (cd "$root" && find . -xdev \( -path ./proc -o -path ./sys -o -path ./dev -o -path ./tmp -o -path ./var/cache \
    -o -path ./etc/cups -o -path ./var/spool/cups -o -path ./run -o -path ./root \
    -o -path ./var/log -o -path ./var/lib/apt -o -path ./var/lib/dpkg -o -path ./etc/ld.so.cache \) -prune -o -print | sort)
}

say "A bare root"
bare_root >"$work/log" 2>&1 || { tail -20 "$work/log"; exit 1; }
mkdir "$root/packages"
cp "$packages"/*.deb scripts/first-day.sh "$root/packages/"
# What the packages depend on is there before, so that what is found after the purge is theirs.
mapfile -t names < <(for file in "$packages"/*.deb; do dpkg-deb -f "$file" Package; done)
inside apt-get update -qq
inside apt-get install -y -qq --no-install-recommends cups-daemon cups-client sane-utils liblmdb0 \
  libtiff6 libpng16-16 libusb-1.0-0 python3 >>"$work/log" 2>&1
files >"$work/before"

say "Installing ${names[*]}"
inside sh -c 'apt-get install -y -qq --no-install-recommends /packages/*.deb' >>"$work/log" 2>&1 ||
  { tail -20 "$work/log"; exit 1; }
inside qvn --version
inside sh -c 'for tool in qvn qvn-sim; do ldd "/usr/bin/$tool"; done; ldd /usr/lib/cups/backend/qvn /usr/lib/*/sane/libsane-qvn.so.1 /usr/lib/*/qvn/transports/*.so' | grep 'not found' &&
  { echo "a library is missing" >&2; exit 1; }
inside python3 -c 'import qvn; print("python3-qvn:", len(qvn._FUNCTIONS), "functions,", qvn.c.QvnSuspend())'

say "A first day with them"
inside timeout 300 /packages/first-day.sh
[ -d "$root/var/lib/qvn" ]

say "Purging"
inside apt-get purge -y -qq "${names[@]}" >>"$work/log" 2>&1
files >"$work/after"
if ! diff "$work/before" "$work/after"; then
  echo "the packages left the above behind" >&2
  exit 1
fi
echo "nothing is left"
