#!/usr/bin/env bash
# Draws docs/pictures/*.svg from the .dot files beside them. What a picture looks like depends on the fonts and the version
# of Graphviz, so each names the checksum of its source, by which --check finds one that was not drawn anew.
# usage: scripts/pictures.sh [--check]
set -euo pipefail
cd "$(dirname "$0")/../docs/pictures"

stale=0
for source in *.dot; do
  picture=${source%.dot}.svg
  checksum=$(sha256sum <"$source")
  mark="<!-- drawn by ./dev pictures from $source, ${checksum%% *} -->"
  if [ "${1:-}" != --check ]; then
    dot -Tsvg "$source" >"$picture"
    echo "$mark" >>"$picture"
  elif ! grep -qxF -- "$mark" "$picture"; then
    echo "docs/pictures/$picture is not what $source says: run ./dev pictures" >&2
    stale=1
  fi
done
exit "$stale"
