#!/usr/bin/env bash
# Standard error is buffered; a failed internal assertion must still show every diagnostic before
# it and its own text. A clock division of two constants is such an assertion. The text holds the
# source file's path, so this is checked by pattern rather than as a golden case.
set -u
vorp=$1
work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 1
printf '\t.ascii "\303"\n\t.word 7 $CDu 2\n' > a.S
"$vorp" a.S -o a.o > out.txt 2> err.txt
status=$?
fail=0
[ "$status" = 134 ] || { echo "status $status, expected 134 (abort)"; fail=1; }
[ "$(sed -n 1p err.txt)" = "a.S:1: Warning: A00002 unprintable character in string" ] || fail=1
grep -q "Assertion \`0 && \"Unexpected opcode\\\\n\"' failed\." err.txt || fail=1
[ "$fail" = 0 ] || { echo "stderr:"; cat err.txt; }
exit $fail
