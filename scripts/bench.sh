#!/usr/bin/env bash
# Measures the library side by side with what it stands on, adds the rows to BUILD_DIR/bench.json, prints them beside
# those of the kept run and draws them (bench.svg); with --keep this run is the kept one from then on. The
# micro-benchmarks' times go to BUILD_DIR/bench-parts.json. docs/performance.md explains it all.
# usage: scripts/bench.sh BUILD_DIR [--keep]
set -euo pipefail

build=$1
scripts=${0%/*}
run=$build/bench.json
"$build/bench/qvn_bench_parts" --benchmark_min_time=0.05 --benchmark_format=json >"$build/bench-parts.json" \
  2>/dev/null
for program in qvn_bench_pairs QR__bench_store qvn_bench_spooler qvn_bench_scan_command qvn_bench_usb qvn_bench_startup; do
  # Without libusb there is nothing to measure on USB.
  [ "$program" != qvn_bench_usb ] || [ -x "$build/bench/$program" ] || continue
  "$build/bench/$program" "$run" >/dev/null
done
"$scripts/bench_chart.py" "$run" "$build/bench.svg"
"$scripts/bench_table.py" show "$run"
[ "${2:-}" != --keep ] || "$scripts/bench_table.py" keep "$run"
