#!/usr/bin/env bash
# Prints real files to a simulated printer through the module, its IPv4 transport and the command line, and shows
# that every byte arrived. usage: scripts/demo.sh BUILD_DIR
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

say "A printer, simulated on loopback"
mkfifo "$work/ready"
"$build/tools/qvn-sim/qvn-sim" --jobs "$work/jobs" --trace "$work/packets" --quit-on-eof >"$work/ready" < <(tail -f /dev/null --pid=$$) &
device=$!
exec 3<"$work/ready"
read -r ready <&3
echo "$ready"
port=$(sed -n 's/.*"discovery":\([0-9]*\).*/\1/p' <<<"$ready")

say "The machine learns of the transport and finds the printer"
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

say "Sent and received"
marker=1b2a8200000000ac
all_equal=yes
printf '%-12s %10s %10s  %-8s  %-16s  %-16s  %s\n' \
  file sent received marker "sha256 sent" "sha256 received" equal
for i in "${!files[@]}"; do
  sent=${files[$i]}
  received=$work/jobs/job-$((i + 1)).prn
  sent_size=$(stat -c %s "$sent")
  received_size=$(stat -c %s "$received")
  # The job is the file and the end-of-job marker that the command adds.
  sent_sum=$(sha256sum "$sent" | cut -c1-16)
  received_sum=$(head -c "$sent_size" "$received" | sha256sum | cut -c1-16)
  ends_with_marker=no
  [ "$(tail -c 8 "$received" | od -An -tx1 | tr -d ' \n')" = "$marker" ] && ends_with_marker=yes
  equal=no
  cmp -s "$sent" <(head -c "$sent_size" "$received") && [ "$received_size" -eq $((sent_size + 8)) ] &&
    [ "$ends_with_marker" = yes ] && grep -q '"outcome":"complete"' "${received%.prn}.json" && equal=yes
  [ "$equal" = yes ] || all_equal=no
  printf '%-12s %10d %10d  %-8s  %-16s  %-16s  %s\n' \
    "$(basename "$sent")" "$sent_size" "$received_size" "$ends_with_marker" "$sent_sum" "$received_sum" "$equal"
done
echo "(received = sent + 8 bytes of end-of-job marker; the sums are over the bytes of the file)"
[ "$all_equal" = yes ]
