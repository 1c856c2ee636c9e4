#!/usr/bin/env bash
# Running out of memory ends the run with "INTERNAL ERROR", status 1 and no object, not even the
# one an earlier run left. The address-space limit doesn't mix with the sanitizers' shadow memory,
# so this runs in the plain build only.
set -u
vorp=$1
work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 1
# About 190 MB of memory once assembled (constant data takes some 25 bytes a value): above the
# limit below.
awk 'BEGIN { print ".section .rodata"; for (i = 0; i < 240000; ++i) { printf ".byte"; for (j = 0; j < 31; ++j) printf " %d,", (i + j) % 256; print " 0" } }' > big.S
echo "an earlier object" > big.o
(ulimit -v 150000; exec "$vorp" big.S -o big.o) > out.txt 2> err.txt
status=$?
fail=0
[ "$status" = 1 ] || { echo "status $status, expected 1"; fail=1; }
[ "$(cat err.txt)" = "INTERNAL ERROR" ] || { echo "stderr:"; cat err.txt; fail=1; }
[ ! -e big.o ] || { echo "big.o is still there"; fail=1; }
[ ! -s out.txt ] || { echo "stdout:"; cat out.txt; fail=1; }
exit $fail
