# A bare Debian root of the running release in $root, and commands in it. For scripts to source that root runs.

# Makes it; needs the package mirror. Nothing is started by what is installed there.
bare_root() {
  debootstrap --variant=minbase "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$root"
  printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
  chmod 755 "$root/usr/sbin/policy-rc.d"
}

# inside COMMAND...: with nothing of this machine's environment.
inside() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive "$@"; }
