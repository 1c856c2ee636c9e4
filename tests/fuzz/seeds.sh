#!/usr/bin/env bash
# Gathers the seed corpus into OUT: the end-to-end inputs, the bundled example and small outputs of
# bench/gen.py (where python3 is present). With a third argument, runs every seed through that
# corpus runner.
#
#   seeds.sh ROOT OUT [RUNNER]
set -eu
root=$1
out=$2
mkdir -p "$out"
rm -f "$out"/*
for input in "$root"/tests/e2e/cases/*/*.S "$root"/examples/*.S; do
  case_name=$(basename "$(dirname "$input")")
  cp "$input" "$out/${case_name}_$(basename "$input")"
done
if command -v python3 > /dev/null; then
  for kind in plain --switch --loc --data; do
    extra=$kind
    [ "$kind" = plain ] && extra=""
    python3 "$root/bench/gen.py" 300 "$out/gen${kind//-/_}.S" $extra > /dev/null
  done
  python3 "$root/bench/gen.py" 300 "$out/gen_chain.S" --chain 200 > /dev/null
fi
if [ $# -ge 3 ]; then
  "$3" "$out"
fi
