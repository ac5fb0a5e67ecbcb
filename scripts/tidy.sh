#!/usr/bin/env bash
# Runs clang-tidy over the sources of the library, the transports and the tools that BUILD_DIR/compile_commands.json
# names; fails on findings. The tests are left out: they would take longer than all the rest.
# usage: scripts/tidy.sh BUILD_DIR
set -euo pipefail
cd "$(dirname "$0")/.."

# The database is g++'s, which has warnings that clang does not know and precompiled headers that it cannot read.
log=$1/tidy.log
mkdir -p "$1/tidy"
sed -E 's/ -fpch-preprocess//; s/ -Winvalid-pch -include [^ ]*cmake_pch\.hxx//' "$1/compile_commands.json" \
  >"$1/tidy/compile_commands.json"
if ! run-clang-tidy -quiet -p "$1/tidy" -j "$(nproc)" -extra-arg=-Wno-unknown-warning-option \
  "^$(pwd)/(src|transports|tools)/" >"$log" 2>&1; then
  grep -avE '^clang-tidy|warnings? generated|^$' "$log"
  exit 1
fi
echo "tidy: no findings in $(grep -ac '^clang-tidy' "$log") sources"
