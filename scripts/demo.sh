#!/usr/bin/env bash
# Prints real files to a simulated device of each family, scans pages from it and hears its buttons, through the
# module, its IPv4 transport and the command line, and shows that every byte arrived. usage: scripts/demo.sh BUILD_DIR
set -euo pipefail
cd "$(dirname "$0")/.."

build=$1
qvn=$build/tools/qvn/qvn
work=$(mktemp -d)
devices=()
finish() {
  for device in "${devices[@]}"; do
    kill "$device" 2>/dev/null || true
    wait "$device" 2>/dev/null || true
  done
  rm -rf "$work"
}
trap finish EXIT

export QVN_HOME=$work/home
export QVN_TRANSPORT_PATH=$build/transports

say() { printf '\n== %s\n' "$*"; }
run() {
  printf '$ qvn %s\n' "$*"
  "$qvn" "$@"
}

# What was done, a line each: device, what, bytes or dots, milliseconds, checksum there, checksum here.
results=$work/results
now() { date +%s%3N; }
pixels_of() {
  read -r dots _ _ checksum _ < <(scripts/png_pixels.py "$1")
}

# The device ends with this script: its console is a pipe that this shell alone holds open, as $console.
start_device() {
  mkdir "$work/$family"
  mkfifo "$work/$family/ready" "$work/$family/console"
  "$build/tools/qvn-sim/qvn-sim" --family "$family" --serial "$family" --jobs "$work/$family/jobs" \
    --scans "$work/$family/scans" --feeder 2 --trace "$work/$family/trace" --quit-on-eof \
    >"$work/$family/ready" <"$work/$family/console" &
  devices+=($!)
  exec {ready}<"$work/$family/ready" {console}>"$work/$family/console"
  read -r line <&"$ready"
  echo "$line"
  run discover --transport IPv4 "127.0.0.1:$(sed -n 's/.*"discovery":\([0-9]*\).*/\1/p' <<<"$line")"
}

# print_file NUMBER FILE: the device's job of that number is the file.
print_file() {
  local start
  start=$(now)
  run print --device "IP_$family" "$2"
  local milliseconds=$(($(now) - start)) received=$work/$family/jobs/job-$1.prn
  local outcome
  outcome=$(sed -n 's/.*"outcome": *"\([a-z]*\)".*/\1/p' "${received%.prn}.json")
  echo "$family print:$(basename "$2") $(stat -c %s "$2") $milliseconds $(sha256sum "$2" | cut -d' ' -f1)" \
    "$(sha256sum "$received" | cut -d' ' -f1) $outcome" >>"$results"
}

# scan_pages FIRST WHAT OPTIONS: the pages of the device from that number on.
scan_pages() {
  local number=$1 what=$2 start
  shift 2
  start=$(now)
  mkdir "$work/$family/$what"
  run scan --device "IP_$family" "$@" -o "$work/$family/$what/page.png"
  local milliseconds=$(($(now) - start)) page
  for page in "$work/$family/$what"/*.png; do
    pixels_of "$work/$family/scans/page-$number.png"
    local sent=$checksum
    pixels_of "$page"
    echo "$family scan:$what $dots $milliseconds $sent $checksum complete" >>"$results"
    number=$((number + 1))
    milliseconds=- # the time is that of the command
  done
}

press_button() {
  local start watching
  "$qvn" hid watch --json --device "IP_$family" >"$work/$family/buttons" &
  watching=$!
  start=$(now)
  for _ in $(seq 100); do
    # Until somebody watches, a pressed button is heard by nobody.
    echo "button 2" >&"$console"
    grep -q '"button":2' "$work/$family/buttons" && break
    sleep 0.05
  done
  local milliseconds=$(($(now) - start))
  kill -INT "$watching"
  wait "$watching" || true
  grep -m1 '"button":2' "$work/$family/buttons"
  echo "$family button:2 - $milliseconds - - heard" >>"$results"
}

say "The machine learns of the transport"
run log on
run settings set TeojInterval 100
run transport add qvn_ipv4.so
run transport list

document=README.md
[ -f "$document" ] || document=docs/cli.md
cp "$document" "$work/$(basename "$document")"
head -c 8000000 /dev/urandom >"$work/noise.prn"

for family in CpdPrinter BpdPrinter; do
  say "$family: a printer, scanner and button panel, simulated on loopback"
  start_device

  say "$family: two jobs, a document of this tree and 8 MB of noise"
  print_file 1 "$work/$(basename "$document")"
  print_file 2 "$work/noise.prn"

  say "$family: a page in colour from the glass, and two in gray from the feeder"
  scan_pages 1 glass --dpi 100 --mode color
  scan_pages 2 feeder --dpi 75 --mode gray --source feeder --pages all

  say "$family: a button is pressed"
  press_button
done

say "The devices, and what the log says of the first job, without the writes in between"
run device list
run log show >"$work/log"
grep -E 'StartJobPrinter|EndJobPrinter|PrinterJobId|EOJ marker|getJobComplete|QueryJobsCompleted' "$work/log" |
  head -14 | cut -c1-150 || true
printf '(%s lines in all; %s packets and documents on the wire)\n' "$(wc -l <"$work/log")" \
  "$(cat "$work"/*/trace | wc -l)"

say "What was done"
all_equal=yes
printf '%-10s  %-16s  %10s  %6s  %-16s  %-16s  %s\n' device what size ms "sha256 sent" "sha256 received" equal
while read -r family what size milliseconds sent received outcome; do
  case $outcome in
    heard) equal=- ;;
    complete) equal=$([ "$sent" = "$received" ] && echo yes || echo no) ;;
    *) equal=no ;;
  esac
  [ "$equal" != no ] || all_equal=no
  printf '%-10s  %-16s  %10s  %6s  %-16s  %-16s  %s\n' "$family" "$what" "$size" "$milliseconds" "${sent:0:16}" \
    "${received:0:16}" "$equal"
done <"$results"
echo "(sizes are bytes of print data and dots of pages; the checksums of pages are those of their pixels)"
[ "$all_equal" = yes ]
