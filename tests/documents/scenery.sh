# What the hidden commands of the documents set up; bash reads it before each block.

# simulate ADDRESS [OPTION...]: a device where a document says that one stands, found as real ones are.
simulate() {
  local address=$1 said
  shift
  exec {said}< <(exec qvn-sim --address "$address" --discovery-port 9200 "$@" 2>&1)
  read -r -t 30 -u "$said" || { echo "no device at $address" >&2; return 1; }
}

# stored ADDRESS [OPTION...]: the library is set up and knows the device there.
stored() {
  qvn install
  simulate "$@"
  qvn discover "$1"
}

# scheduler: CUPS, of which nobody outside knows.
scheduler() {
  mkdir -p /run/cups /var/spool/cups/tmp
  printf 'Listen /run/cups/cups.sock\nServerAlias *\nBrowsing No\nWebInterface No\nDefaultAuthType None\n<Location />\n</Location>\n' \
    >/etc/cups/cupsd.conf
  cupsd
  await sh -c 'lpstat -r | grep -q "is running"'
}

# moved_to DIRECTORY: the installation is there, and no longer in /usr.
moved_to() {
  (cd "$PREFIX" && find . -not -type d) | (cd /usr && xargs rm -f)
  rm -f /etc/sane.d/dll.d/qvn
  cp -a "$PREFIX/." "$1"
}

# every_100_ms COMMAND...: a script for a device that carries one of them out every 100 ms, for two minutes.
every_100_ms() {
  local time
  for ((time = 0; time < 1200; time++)); do
    printf 'wait 100\n%s\n' "${@:time % $# + 1:1}"
  done
}

# await COMMAND...: until it succeeds, at most half a minute.
await() {
  local tries=0
  until "$@" >/dev/null 2>&1; do
    [ $((tries += 1)) -lt 300 ] || { echo "this does not happen: $*" >&2; return 1; }
    sleep 0.1
  done
}

until_ctrl_c() { python3 "$RUNNER" --until-ctrl-c "$@"; }
