#!/usr/bin/env bash
# Prints real files to a simulated device, scans pages from it and hears its buttons, through the module, its IPv4
# transport and the command line, and shows that every byte arrived. usage: scripts/demo.sh BUILD_DIR
set -euo pipefail
cd "$(dirname "$0")/.."

build=$1
qvn=$build/tools/qvn/qvn
work=$(mktemp -d)
device=
finish() {
  if [ -n "$device" ]; then
    kill "$device" 2>/dev/null || true
    wait "$device" 2>/dev/null || true
  fi
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

say "A printer, scanner and button panel, simulated on loopback"
# The device ends with this script: its console is a pipe that this shell alone holds open.
mkfifo "$work/ready" "$work/console"
"$build/tools/qvn-sim/qvn-sim" --jobs "$work/jobs" --scans "$work/scans" --feeder 2 --trace "$work/packets" --quit-on-eof \
  >"$work/ready" <"$work/console" &
device=$!
exec 3<"$work/ready" 4>"$work/console"
read -r ready <&3
echo "$ready"
port=$(sed -n 's/.*"discovery":\([0-9]*\).*/\1/p' <<<"$ready")

say "The machine learns of the transport and finds the device"
run log on
run settings set TeojInterval 100
run transport add qvn_ipv4.so
run transport list
run discover --transport IPv4 "127.0.0.1:$port"

say "Two jobs: a document of this tree, and 8 MB of noise"
document=README.md
[ -f "$document" ] || document=docs/cli.md
cp "$document" "$work/$(basename "$document")"
head -c 8000000 /dev/urandom >"$work/noise.prn"
files=("$work/$(basename "$document")" "$work/noise.prn")
run print "${files[@]}"
run status

say "What the log says of the first job, without the writes in between"
run log show >"$work/log"
grep -E 'StartJobPrinter|EndJobPrinter|PrinterJobId|EOJ marker|getJobComplete|QueryJobsCompleted' "$work/log" |
  head -14 | cut -c1-150 || true
printf '(%s lines in all; %s packets on the wire)\n' "$(wc -l <"$work/log")" "$(wc -l <"$work/packets")"

say "A page in colour from the glass, and two in gray from the feeder"
run scan --dpi 100 --mode color -o "$work/glass.png"
run scan --dpi 75 --mode gray --source feeder --pages all -o "$work/sheet.png"
pages=("$work/glass.png" "$work/sheet-1.png" "$work/sheet-2.png")

say "A button is pressed"
"$qvn" hid watch --json >"$work/buttons" &
watching=$!
for _ in $(seq 100); do
  # Until somebody watches, a pressed button is heard by nobody.
  echo "button 2" >&4
  grep -q '"button":2' "$work/buttons" && break
  sleep 0.05
done
kill -INT "$watching"
wait "$watching" || true
grep -m1 '"button":2' "$work/buttons"

say "Sent and received"
all_equal=yes
printf '%-12s %10s %10s  %-16s  %-16s  %-8s  %s\n' \
  file sent received "sha256 sent" "sha256 received" outcome equal
for i in "${!files[@]}"; do
  sent=${files[$i]}
  received=$work/jobs/job-$((i + 1)).prn
  outcome=$(sed -n 's/.*"outcome": *"\([a-z]*\)".*/\1/p' "${received%.prn}.json")
  equal=no
  cmp -s "$sent" "$received" && [ "$outcome" = complete ] && equal=yes
  [ "$equal" = yes ] || all_equal=no
  printf '%-12s %10d %10d  %-16s  %-16s  %-8s  %s\n' "$(basename "$sent")" \
    "$(stat -c %s "$sent")" "$(stat -c %s "$received")" \
    "$(sha256sum "$sent" | cut -c1-16)" "$(sha256sum "$received" | cut -c1-16)" "$outcome" "$equal"
done
echo "(the device stores a job without the end-of-job marker that the command adds)"

say "Scanned"
printf '%-12s %-9s  %-16s  %-16s  %s\n' file dots "sha256 sent" "sha256 scanned" equal
for i in "${!pages[@]}"; do
  read -r dots _ _ scanned _ < <(scripts/png_pixels.py "${pages[$i]}")
  read -r _ _ _ sent _ < <(scripts/png_pixels.py "$work/scans/page-$((i + 1)).png")
  equal=no
  [ "$sent" = "$scanned" ] && equal=yes
  [ "$equal" = yes ] || all_equal=no
  printf '%-12s %-9s  %-16s  %-16s  %s\n' "$(basename "${pages[$i]}")" "$dots" "${sent:0:16}" "${scanned:0:16}" \
    "$equal"
done
echo "(of the pixels; the files are compressed differently)"
[ "$all_equal" = yes ]
