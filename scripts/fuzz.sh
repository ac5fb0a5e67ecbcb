#!/usr/bin/env bash
# Runs each fuzzer for a while, from the seeds in the tree, with all it finds below BUILD_DIR/fuzz.
# usage: scripts/fuzz.sh BUILD_DIR SECONDS_EACH
set -euo pipefail
cd "$(dirname "$0")/.."

build=$(cd "$1" && pwd)
seconds=$2
for fuzzer in "$build"/tests/fuzz/qvn_fuzz_*; do
  [ -x "$fuzzer" ] && [ -f "$fuzzer" ] || continue
  name=${fuzzer##*/qvn_fuzz_}
  scratch=$build/fuzz/$name
  mkdir -p "$scratch/corpus"
  echo "== $name, $seconds s"
  # The registry's fuzzers need a place of their own, and what it holds is of no use afterwards.
  if ! QVN_HOME=$scratch "$fuzzer" -max_total_time="$seconds" -max_len=4096 -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -artifact_prefix="$scratch/" "$scratch/corpus" "tests/fuzz/corpus/$name" \
    >"$scratch/log" 2>&1; then
    tail -n 40 "$scratch/log"
    exit 1
  fi
  grep -E 'number_of_executed_units|new_units_added' "$scratch/log" || true
done
