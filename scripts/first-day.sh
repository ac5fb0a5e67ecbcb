#!/bin/sh
# A first day with the installed packages: finds two simulated printers, prints to both through CUPS, watches one,
# scans with it and takes the library off again. Runs as root on a machine of its own (scripts/check-packages.sh makes
# one), since it starts a scheduler and changes the machine's settings.
set -eu

work=$(mktemp -d)
cd "$work"
started=
# Whatever happens, nothing that was started stays.
trap 'for process in $started; do kill "$process" 2>/dev/null || true; done' EXIT
say() { printf '\n-- %s\n' "$*"; }
# Until the command succeeds, at most half a minute.
await() {
  tries=0
  until "$@" >/dev/null 2>&1; do
    tries=$((tries + 1))
    [ "$tries" -lt 300 ] || { echo "this does not happen: $*" >&2; exit 1; }
    sleep 0.1
  done
}

say "Two printers: one that speaks packets, one that takes plain data"
mkfifo cpd.console bpd.console
qvn-sim --jobs cpd --scans scanned --feeder 2 --events --quit-on-eof <cpd.console >cpd.said &
started="$started $!"
exec 4>cpd.console
qvn-sim --family BpdPrinter --plain --serial PLAIN1 --jobs bpd --events --quit-on-eof <bpd.console >bpd.said &
started="$started $!"
exec 5>bpd.console
await test -s cpd.said
await test -s bpd.said
place() { sed -n '1s/.*"address":"\([^"]*\)","discovery":\([0-9]*\).*/\1:\2/p' "$1"; }
qvn install
qvn settings set TeojInterval 50
qvn transport list
qvn discover "$(place cpd.said),$(place bpd.said)"
/usr/lib/cups/backend/qvn

say "A file as large as a document, printed to both with lp"
head -c 3000000 /dev/urandom | tr '\000' 'x' >document
cupsd -f >cupsd.said 2>&1 &
scheduler=$!
started="$started $scheduler"
await sh -c 'lpstat -r | grep -q "is running"'
lpadmin -p packets -v qvn://IP_SIM0000001 -m raw -E 2>/dev/null
lpadmin -p plain -v qvn://IP_PLAIN1 -m raw -E 2>/dev/null
lp -d packets -o raw document
lp -d plain -o raw document
await test -s cpd/job-1.json
await test -s bpd/job-1.json
sha256sum document cpd/job-1.prn bpd/job-1.prn
cmp document cpd/job-1.prn
cmp document bpd/job-1.prn

say "Watching: out of paper, and a job of another program from its beginning to its end"
qvn watch --device IP_SIM0000001 --count 4 >watched 2>watch.said &
watcher=$!
started="$started $watcher"
await grep -q watching watch.said
echo "status 0 0x4000" >&4
echo "status 0 0" >&4
await sh -c '[ "$(wc -l <watched)" -ge 2 ]'
qvn print --device IP_SIM0000001 document
wait "$watcher"
cat watched
grep -q 'idle: out of paper' watched
tail -n 1 watched | grep -q 'idle: ready'

say "Scanning from the glass and the feeder, with qvn and through SANE"
qvn scan --dpi 100 -o glass.png
qvn scan --source feeder --pages all --dpi 100 --mode bw -o feeder.tif
# No other backend looks for its devices.
: >/etc/sane.d/dll.conf
scanimage -L | grep 'qvn:IP_SIM0000001'
scanimage -d qvn:IP_SIM0000001 --resolution 100 --format=png -o sane.png
cmp glass.png sane.png
ls -l glass.png feeder.tif sane.png

say "Taking it off again"
lpadmin -x packets
lpadmin -x plain
kill "$scheduler"
wait "$scheduler" || true
exec 4>&- 5>&-
wait
qvn uninstall
qvn registry export 2>said && { echo "the library left settings behind" >&2; exit 1; }
cat said
cd /
rm -r "$work"
started=
