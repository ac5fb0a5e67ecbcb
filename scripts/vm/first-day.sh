#!/bin/sh
# A new user's first day with a device on USB: prints, pulls the plug in the middle of a job, scans, hears buttons, and
# meets other programs and other users. Runs as root on a machine of its own with the packages installed, whose kernel
# may load vhci-hcd (scripts/vm.sh makes one): the device is simulated and attached as USB/IP, all else is real.
set -eu

work=$(mktemp -d)
chmod 755 "$work"
cd "$work"
started=
trap 'for process in $started; do kill "$process" 2>/dev/null || true; done' EXIT
say() { printf '\n-- %s\n' "$*"; }
run() {
  printf '$ %s\n' "$*"
  "$@"
}
die() {
  echo "this must not be: $*" >&2
  exit 1
}
# Until the command succeeds, at most a minute.
await() {
  end=$(($(date +%s) + 60))
  until "$@" >/dev/null 2>&1; do
    [ "$(date +%s)" -lt "$end" ] || die "not in time: $*"
    sleep 0.1
  done
}
# refused WHY SECONDS COMMAND...: fails within the time and says why, in words or with a result code.
refused() {
  why=$1 seconds=$2
  shift 2
  printf '$ %s\n' "$*"
  began=$(date +%s)
  if timeout "$seconds" "$@" >refusal 2>&1; then die "$* succeeded"; fi
  cat refusal
  echo "(after $(($(date +%s) - began)) s)"
  grep -Eq "$why|\(result $why," refusal || die "it does not say '$why', or not within $seconds s"
}

# simulate NAME OPTIONS...: a device of that name, whose console is the descriptor 4.
simulate() {
  mkfifo "$1.console"
  name=$1
  shift
  qvn-sim --usb --serial "$name" --jobs "$name.jobs" --scans "$name.scans" --events --quit-on-eof "$@" \
    <"$name.console" >"$name.said" 2>&1 &
  device=$!
  started="$started $device"
  exec 4>"$name.console"
  await test -s "$name.said"
}
tell() {
  echo "(the device: $1)"
  echo "$1" >&4
}
plug_in() {
  run usbip attach -r 127.0.0.1 -b 1-1
  await test -c /dev/usb/lp0
  run udevadm settle
}
# received NUMBER FILE: the device's job of that number is the file.
received() {
  await test -s "$name.jobs/job-$1.json"
  run sha256sum "$2" "$name.jobs/job-$1.prn"
  cmp "$2" "$name.jobs/job-$1.prn"
}

head -c 3000000 /dev/urandom >document

say "A printer with scanner and buttons is plugged in: the kernel and udev know it"
simulate OFFICE --feeder 2
plug_in
run ls -l /dev/usb/lp0
run readlink /sys/bus/usb/devices/1-1:1.0/driver
node=$(ls /dev/bus/usb/001/* | tail -n 1)
run udevadm info --query=property --property=ID_USB_INTERFACES,TAGS --name="$node" | tee properties
grep -q uaccess properties

say "The library learns of the transport and finds the device"
run qvn install
run qvn settings set TeojInterval 50
# A device that was unplugged never tells that it has cancelled a job.
run qvn settings set TeojDuration 5000
run qvn transport add qvn_usb1.so
run qvn transport list
run qvn discover
run qvn status

say "The kernel's own driver prints to it"
# The device knows by this where a job ends.
{ cat document && printf '\033*\202\0\0\0\0\254'; } >/dev/usb/lp0
received 1 document

say "A queue of the scheduler, and a file printed with lp; the kernel's driver gets the printer back"
cupsd -f >cupsd.said 2>&1 &
started="$started $!"
await sh -c 'lpstat -r | grep -q "is running"'
run /usr/lib/cups/backend/qvn
run lpadmin -p office -v qvn://USB_OFFICE -m raw -E 2>/dev/null
run lp -d office -o raw document
received 2 document
await test -c /dev/usb/lp0
run readlink /sys/bus/usb/devices/1-1:1.0/driver

say "The plug is pulled in the middle of a job of the scheduler"
# Slow enough that there is a middle.
tell "fault slow-print=300000"
run lp -d office -o raw document
await sh -c 'lpstat -l -p office | grep -q "sending the job"'
run usbip detach -p 0 2>&1
await sh -c 'lpstat -l -p office | grep -q "the printer does not take the data"'
run lpstat -l -p office | head -n 3
tell "fault slow-print=100000000"
plug_in
run cancel -a office
run lp -d office -o raw document
received 4 document

say "And in the middle of a job of qvn"
tell "fault usb-unplug=1000000:1"
refused "the job is lost, print it again" 60 qvn print --timeout 5 document
refused 1167 30 qvn print document
tell plug
plug_in
run qvn print document
received 6 document

say "Pages from the glass and the feeder, with qvn and through SANE"
run qvn scan --dpi 100 -o glass.png
run qvn scan --source feeder --pages all --dpi 100 --mode bw -o feeder.tif
# No other backend looks for its devices.
: >/etc/sane.d/dll.conf
run scanimage -L
run scanimage -d qvn:USB_OFFICE --resolution 100 --format=png -o sane.png
run cmp glass.png sane.png

say "A button is pressed"
qvn hid watch --count 1 >pressed 2>watching &
watcher=$!
started="$started $watcher"
await grep -q watching watching
tell "button 2"
wait "$watcher"
cat pressed
grep -q 'button 2' pressed

say "Somebody else has /dev/usb/lp0 open"
exec 5>/dev/usb/lp0
refused 170 30 qvn print document
exec 5>&-
run qvn print document
received 7 document

say "A user who is not in the group lp, and then is"
as_somebody() { run su --login somebody --command "$1"; }
as_somebody "qvn install"
refused 5 30 su --login somebody --command "qvn transport add qvn_usb1.so"
as_somebody "qvn log show" | tee log
grep -q 'no permission; the udev rule 70-qvn-usb.rules' log
run usermod --append --groups lp somebody
as_somebody "qvn discover"
as_somebody "qvn print $work/document"
received 8 document

for family in BpdPrinter plain; do
  say "A $family device instead: print and scan"
  tell quit
  exec 4>&-
  wait "$device"
  await sh -c '! test -e /dev/usb/lp0'
  case $family in
    plain) simulate PLAIN --family BpdPrinter --plain ;;
    *) simulate HOME --family BpdPrinter ;;
  esac
  plug_in
  cat document >/dev/usb/lp0
  received 1 document
  run qvn discover
  run qvn print --device "USB_$name" document
  received 2 document
  [ "$family" = plain ] && continue
  run qvn scan --device "USB_$name" --dpi 100 -o home.png
  run scanimage -d "qvn:USB_$name" --resolution 100 --format=png -o sane.png
  run cmp home.png sane.png
done

say "Taking it off again"
run lpadmin -x office
run qvn transport remove USB1
run qvn uninstall

say "What the kernel has to say of it"
dmesg --level=emerg,alert,crit,err,warn | grep -i usb || true
if dmesg | grep -E 'did not claim interface|WARNING:|BUG:'; then die "that"; fi
