#!/usr/bin/env bash
# VORP_STATS=1 puts the run's counts on standard error, one "vorp: stats:" line each, with the
# format passes of every section in the order the sections were settled; without it nothing is
# printed. A run stopped at the pass limit still shows what it counted. The pass and grouping
# counts depend on how the format iteration goes, so they are checked for their form and bounds.
. "$(dirname "${BASH_SOURCE[0]}")/script_start.sh"

# Five lines of 16 tokens: bu fwd NL, nop NL, fwd : NL, .section .rodata NL, .byte 1 , 2 NL.
printf '\tbu fwd\n\tnop\nfwd:\n\t.section .rodata\n\t.byte 1, 2\n' > a.S

"$vorp" a.S -o a.o 2> err.txt
[ "$?" = 0 ] && [ ! -s err.txt ] || problem "without VORP_STATS: status or stderr"

VORP_STATS=1 "$vorp" a.S -o a.o 2> err.txt
[ "$?" = 0 ] || problem "with VORP_STATS: status $?"
[ "$(grep -c -v '^vorp: stats: ' err.txt)" = 0 ] || problem "not a stats line in stderr"
[ "$(sed -n 1p err.txt)" = "vorp: stats: 5 lines" ] || problem "lines"
[ "$(sed -n 2p err.txt)" = "vorp: stats: 16 tokens" ] || problem "tokens"
[ "$(grep -c 'format passes$' err.txt)" = 2 ] || problem "not one passes line for each of two sections"
grep -q -x 'vorp: stats: section \.text: [1-9][0-9]* format passes' err.txt || problem ".text passes"
[ "$(grep -n 'section \.text:' err.txt | cut -d: -f1)" -lt "$(grep -n 'section \.rodata:' err.txt | cut -d: -f1)" ] ||
  problem "sections out of order"
groupings=$(sed -n 's/^vorp: stats: \([0-9]*\) groupings evaluated$/\1/p' err.txt)
[ -n "$groupings" ] && [ "$groupings" -ge 2 ] || problem "groupings evaluated: '$groupings', expected at least one per instruction"
[ "$(tail -n 1 err.txt)" = "vorp: stats: $(stat -c %s a.o) object bytes" ] || problem "object bytes"
[ "$fail" = 0 ] || { echo "stderr:"; cat err.txt; }

VORP_STATS=1 "$vorp" --max-encoding-passes 1 a.S -o b.o 2> err.txt
[ "$?" = 1 ] || problem "at the pass limit: status $?"
[ "$(sed -n 1p err.txt)" = "vorp: Error: unable to resolve encoder choice after 1 loops" ] || problem "pass limit message"
grep -q -x "vorp: stats: 5 lines" err.txt || problem "at the pass limit: no lines count"
grep -q -x "vorp: stats: 0 object bytes" err.txt || problem "at the pass limit: object bytes"
[ "$fail" = 0 ] || { echo "stderr:"; cat err.txt; }
exit $fail
