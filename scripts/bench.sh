#!/usr/bin/env bash
# Measures the library side by side with what it stands on, prints one table of ratios, writes it to
# BUILD_DIR/bench.json and draws it; the micro-benchmarks' times go to BUILD_DIR/bench-parts.json. docs/performance.md explains both.
# usage: scripts/bench.sh BUILD_DIR
set -euo pipefail

build=$1
"$build/bench/qvn_bench_parts" --benchmark_min_time=0.05 --benchmark_format=json >"$build/bench-parts.json" \
  2>/dev/null
rm -f "$build/bench.json"
{
  "$build/bench/qvn_bench_pairs" "$build/bench.json"
  "$build/bench/QR__bench_store" "$build/bench.json"
  "$build/bench/qvn_bench_spooler" "$build/bench.json"
  "$build/bench/qvn_bench_scan_command" "$build/bench.json"
  "$build/bench/qvn_bench_startup" "$build/bench.json"
} | tee "$build/bench.txt"
echo
"${0%/*}/bench_chart.py" "$build/bench.json"
