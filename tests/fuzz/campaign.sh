#!/usr/bin/env bash
# An in-process fuzzing campaign: Clang's libFuzzer over vorp::assemble, with AddressSanitizer and
# UndefinedBehaviorSanitizer, in fork mode so that it goes on past the internal assertions the input
# language defines (tests/stress/stress.py lists them). At the end every crash, leak and timeout
# is replayed and classified; the exit status is 1 when any is not an allowed assertion.
#
#   campaign.sh [SECONDS [JOBS]]     (default 600 s, 2 jobs), from the repository root
#
# Work goes to build/fuzz (the build) and fuzz-campaign/ (corpus, artifacts, log).
set -eu
seconds=${1:-600}
jobs=${2:-2}
root=$(cd "$(dirname "$0")/../.." && pwd)
clang=""
for candidate in clang++ clang++-14; do
  command -v "$candidate" > /dev/null && { clang=$candidate; break; }
done
[ -n "$clang" ] || { echo "no clang++: libFuzzer needs Clang"; exit 2; }

cmake -S "$root" -B "$root/build/fuzz" -G Ninja -DCMAKE_CXX_COMPILER="$clang" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVORP_SANITIZE=ON -DVORP_FUZZ=ON -DVORP_WERROR=ON > /dev/null
cmake --build "$root/build/fuzz" --target vorp_fuzz > /dev/null
fuzz="$root/build/fuzz/tests/fuzz/vorp_fuzz"

work="$root/fuzz-campaign"
mkdir -p "$work/corpus" "$work/artifacts"
bash "$root/tests/fuzz/seeds.sh" "$root" "$work/seeds"
start=$(date +%s)
# Inputs up to 4 KB, each allowed 2 s under the sanitizers. Inputs that time out are replayed with
# the plain build (build/default/vorp) below: the bound there is 1 s per 10 KB of input, or per
# 100 MB of object for inputs that ask for that much (.skip, .space).
"$fuzz" -fork="$jobs" -ignore_crashes=1 -ignore_timeouts=1 -ignore_ooms=1 -max_total_time="$seconds" \
  -max_len=4096 -timeout=2 -rss_limit_mb=4096 -dict="$root/tests/fuzz/vorp.dict" \
  -artifact_prefix="$work/artifacts/" "$work/corpus" "$work/seeds" > "$work/log.txt" 2>&1 || true
elapsed=$(( $(date +%s) - start ))

executed=$(grep -o '^#[0-9]*' "$work/log.txt" | tail -n 1 | tr -d '#')
echo "inputs run: ${executed:-0} in ${elapsed} s, ${jobs} jobs; corpus $(ls "$work/corpus" | wc -l) files"

allowed=$(python3 -c "import sys; sys.path.insert(0, '$root/tests/stress'); import stress
for text in stress.ALLOWED_ASSERTIONS: print(text)")
status=0
declare -A tally=()
plain="$root/build/default/vorp"
for artifact in "$work"/artifacts/*; do
  [ -e "$artifact" ] || continue
  if [ "${artifact##*/timeout-}" != "$artifact" ] && [ -x "$plain" ]; then
    started=$(date +%s%N)
    "$plain" "$artifact" -o "$work/replay.o" > /dev/null 2>&1 || true
    took=$(( ($(date +%s%N) - started) / 1000000 ))
    object=$(stat -c %s "$work/replay.o" 2> /dev/null || echo 0)
    rm -f "$work/replay.o"
    allowed_ms=$(( ($(stat -c %s "$artifact") + 10239) / 10240 * 1000 ))
    by_object=$(( (object + 104857599) / 104857600 * 1000 ))
    [ "$by_object" -gt "$allowed_ms" ] && allowed_ms=$by_object
    if [ "$took" -le "$allowed_ms" ]; then
      kind="slow only under the sanitizers (plain build within its bound)"
    else
      kind="FAILURE: $(basename "$artifact"): $took ms in the plain build"
      status=1
    fi
    tally[$kind]=$(( ${tally[$kind]:-0} + 1 ))
    continue
  fi
  output=$("$fuzz" -runs=1 "$artifact" 2>&1 || true)
  assertion=$(printf '%s\n' "$output" | sed -n "s/.*Assertion \`\(.*\)' failed\..*/\1/p" | head -n 1)
  if [ -n "$assertion" ] && printf '%s\n' "$allowed" | grep -qxF -- "$assertion"; then
    kind="allowed: $assertion"
  else
    kind="FAILURE: $(basename "$artifact"): $(printf '%s\n' "$output" | grep -m1 -E 'ERROR|Assertion|runtime error|timeout' || echo unknown)"
    status=1
  fi
  tally[$kind]=$(( ${tally[$kind]:-0} + 1 ))
done
for kind in "${!tally[@]}"; do
  echo "${tally[$kind]} x $kind"
done
[ "$status" = 0 ] && echo "no failures"
exit $status
