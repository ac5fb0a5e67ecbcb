#!/usr/bin/env bash
# Runs a script as root on a Debian machine of its own, with a kernel of its own and our packages installed: the
# kernel's USB, its drivers and udev's rules are the real ones. The machine is emulated (QEMU), needs no support of the
# hardware and no network, and always ends by itself. Ends with the script's exit code; all that the machine said stays
# in DIRECTORY/console. What does not depend on our packages is kept in DIRECTORY too and made anew when the list of it
# changes, which needs the package mirror. Needs root.
# usage: scripts/vm.sh DIRECTORY DIRECTORY_OF_PACKAGES SCRIPT
set -euo pipefail

mkdir -p "$1"
kept=$(realpath -- "$1")
packages=$(realpath -- "$2")
script=$(realpath -- "$3")
cd "$(dirname "$0")"
. ./bare-root.sh
[ "$(id -u)" -eq 0 ] || { echo "vm: only root can make a machine's root" >&2; exit 1; }
work=$(mktemp -d -p "$kept")
root=$kept/root
log=$work/log
exec 3>&2
finish() {
  local code=$?
  [ "$code" -eq 0 ] || [ ! -f "$log" ] || tail -n 20 "$log" >&3
  rm -rf --one-file-system "$work"
}
trap finish EXIT

# The machine's own, what our packages depend on, and what prints and scans through them.
programs=(udev kmod busybox-static usbip
  liblmdb0 libexpat1 libxml2 libtiff6 libpng16-16 libavahi-client3 libusb-1.0-0
  cups-daemon cups-client sane-utils)
# What finds the disk, and what devices may need; the kernel and udev load the latter by themselves.
disk_modules=(virtio_pci virtio_blk ext4)
device_modules=(vhci-hcd usblp usbhid hid-generic)
# An emulated machine on a busy one is slow.
time_limit=600

say() { printf '== %s\n' "$*"; }

# The machine would take three times as long to begin as all else if it unpacked the kernel itself.
unpack_kernel() {
  python3 -c '
import lzma, sys
packed = open(sys.argv[1], "rb").read()
sys.stdout.buffer.write(lzma.LZMADecompressor().decompress(packed[packed.index(b"\xfd7zXZ\0"):]))' "$1"
}

# Root and kernel. The kernel is unpacked only: most of an installed one is for machines of other kinds.
make_root() {
  rm -rf --one-file-system "$root"
  bare_root
  inside apt-get update -qq
  inside apt-get install -y -qq --no-install-recommends "${programs[@]}"
  inside useradd --create-home somebody
  local image version modules
  image=$(inside apt-cache depends linux-image-amd64 | sed -n 's/.*Depends: //p')
  inside sh -c 'cd /tmp && apt-get download "$1"' sh "$image"
  dpkg-deb -x "$root"/tmp/linux-image-*.deb "$root/kernel"
  rm "$root"/tmp/*.deb
  inside apt-get clean
  unpack_kernel "$root"/kernel/boot/vmlinuz-* >"$kept/vmlinux"

  # The modules named above and those that they need, in the order in which they are loaded.
  version=$(ls "$root/kernel/lib/modules")
  modules=/lib/modules/$version
  needed() { inside modprobe --dirname /kernel --set-version "$version" --show-depends --all "$@" |
    sed -n 's/^insmod \/kernel\([^ ]*\).*/\1/p' | awk '!seen[$0]++'; }
  inside depmod --basedir /kernel "$version"
  needed "${disk_modules[@]}" >"$root/disk-modules"
  mkdir -p "$root$modules"
  cp "$root/kernel$modules"/modules.{builtin,builtin.modinfo,order} "$root$modules/"
  needed "${disk_modules[@]}" "${device_modules[@]}" | while read -r module; do
    install -D --mode 644 "$root/kernel$module" "$root$module"
  done
  rm -r "$root/kernel"
  inside depmod "$version"
}

# The kernel's first files: enough to find the disk.
make_first_files() {
  mkdir -p "$work/first/bin" "$work/first/root"
  cp "$root/bin/busybox" "$work/first/bin/"
  install --mode 755 vm/first-init "$work/first/init"
  cp "$root/disk-modules" "$work/first/"
  xargs -a "$root/disk-modules" -I{} install -D --mode 644 "$root"{} "$work/first"{}
  (cd "$work/first" && find . | bin/busybox cpio -o -H newc 2>/dev/null) >"$work/first-files"
}

# The disk: the kept root, with our packages installed in it as on any other machine, and the script.
make_disk() {
  cp -a --reflink=auto "$root" "$work/root"
  local root=$work/root
  mkdir "$root/vm"
  # What is for building against the library needs more than is here.
  find "$packages" -name '*.deb' ! -name '*-dev_*' ! -name 'python3-*' -exec cp {} "$root/vm/" \;
  inside sh -c 'dpkg --install /vm/*.deb && rm /vm/*.deb'
  install --mode 755 "$script" "$root/vm/script"
  install --mode 755 vm/init "$root/vm/"
  mke2fs -q -t ext4 -O ^has_journal -d "$root" "$work/disk" 1G
}

recipe() { echo "${programs[@]}" "${disk_modules[@]}" "${device_modules[@]}"; declare -f make_root unpack_kernel bare_root; }
if ! cmp -s <(recipe) "$kept/recipe"; then
  say "A Debian root and kernel (kept for the next run)"
  rm -f "$kept/recipe"
  make_root &>"$log"
  recipe >"$kept/recipe"
fi
say "A machine with our packages"
{ make_first_files; make_disk; } &>"$log"
rm "$log"

timeout --foreground --kill-after=5 "$time_limit" qemu-system-x86_64 -machine q35 -accel tcg -cpu max -smp 2 -m 1G \
  -nodefaults -no-user-config -display none -no-reboot -serial stdio \
  -kernel "$kept/vmlinux" -initrd "$work/first-files" \
  -append "console=ttyS0 quiet panic=-1 oops=panic" \
  -drive "file=$work/disk,format=raw,if=virtio,cache=unsafe" -device virtio-rng-pci </dev/null |
  tee "$kept/console" || true

ended=$(sed -n 's/^vm: the script ended with \([0-9]*\)$/\1/p' "$kept/console" | tail -n 1)
[ -n "$ended" ] || { echo "vm: the machine ended before its script, or after $time_limit s" >&2; exit 1; }
exit "$ended"
