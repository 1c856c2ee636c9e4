#!/usr/bin/env bash
# An object or listing that can't be written completely fails the run: status 1, the reason on
# standard error, and neither a partial file nor a temporary left behind, nor the stale object of
# an earlier run. A run that succeeds leaves its files and nothing else.
. "$(dirname "${BASH_SOURCE[0]}")/script_start.sh"

# About 8 KB of object and 30 KB of listing.
awk 'BEGIN { print ".section .rodata"; for (i = 0; i < 400; ++i) print ".byte 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20" }' > big.S

# expect_failure CASE STATUS MESSAGE: the run's status and standard error, and nothing left in the
# folder but the input.
expect_failure() {
  [ "$2" = 1 ] || problem "$1: status $2, expected 1"
  [ "$(cat err.txt)" = "$3" ] || { problem "$1: stderr:"; cat err.txt; }
  rm -f err.txt
  left=$(ls -A | grep -v '^big\.S$')
  [ -z "$left" ] || problem "$1: left behind:" $left
}

# The object passes a file-size limit of 4 KB (bash counts in KB): the write fails with EFBIG.
echo "an earlier object" > big.o
(ulimit -f 4; exec "$vorp" big.S -o big.o) 2> err.txt
expect_failure "object over the size limit" $? "vorp: Error: unable to write 'big.o': File too large"

# The object fits in 16 KB, the listing doesn't: no object either.
(ulimit -f 16; exec "$vorp" big.S -o big.o -l) 2> err.txt
expect_failure "listing over the size limit" $? "vorp: Error: unable to write 'big.o.txt': File too large"

if [ -c /dev/full ]; then
  "$vorp" big.S -o /dev/full 2> err.txt
  expect_failure "/dev/full" $? "vorp: Error: unable to write '/dev/full': No space left on device"
  [ -c /dev/full ] || problem "/dev/full is gone"
else
  echo "no /dev/full: that case is skipped"
fi

# Success replaces an earlier object, keeping its permissions, and leaves no temporary.
echo "an earlier object" > big.o
chmod 640 big.o
"$vorp" big.S -o big.o -l 2> err.txt
status=$?
[ "$status" = 0 ] || problem "success: status $status"
[ ! -s err.txt ] || { problem "success: stderr:"; cat err.txt; }
[ "$(head -c 4 big.o | od -An -c | tr -d ' ')" = '177ELF' ] || problem "success: big.o is no ELF file"
[ "$(stat -c %a big.o)" = 640 ] || problem "success: big.o has mode $(stat -c %a big.o), expected 640"
[ -s big.o.txt ] || problem "success: no listing"
left=$(ls -A | grep -v -x -e big.S -e big.o -e big.o.txt -e err.txt)
[ -z "$left" ] || problem "success: left behind:" $left
exit $fail
