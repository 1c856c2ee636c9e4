#!/usr/bin/env bash
# Runs one golden end-to-end case.
#
# A case is a folder. `cmd` holds the arguments given to vorp (shell words); `stdin`, if present,
# is fed to it; every other file that is not an expectation is copied into a fresh working folder,
# where vorp runs. A `generate` script, if present, runs there first to make large inputs. Expectations, each compared exactly when present:
#   expected.status   exit status (0 when absent)
#   expected.stderr   standard error (empty when absent)
#   expected.stdout   standard output (empty when absent)
#   expected.files    names that must exist after the run, one per line
#   absent.files      names that must not exist after the run, one per line
#   expected.dump     vorp-dump of the object: a.o, or the name given in `dump.object`; vorp-dump
#                     takes the options in `dump.options` first, if present (`-d` to disassemble)
#   expected.file.X   the contents of the file X written by the run (a listing, say)
#   fixed.workdir     run in this folder instead of a fresh one under the build tree
#   expected.dwarfdump  what llvm-dwarfdump prints of the object with its data relocations applied
#                     (`vorp-dump --resolved`); the file `dwarfdump` holds llvm-dwarfdump's options.
#                     Without llvm-dwarfdump on the machine the case is skipped (status 77).
# With VORP_UPDATE_GOLDEN=1 the status, stderr, stdout and dump expectations are rewritten from the run.
set -u
vorp=$1
case_dir=$2
work=$3

# Outputs that contain the working folder (the compilation directory of -g) need a fixed one;
# a lock keeps two test runs from sharing it at the same time.
if [ -f "$case_dir/fixed.workdir" ]; then
  work=$(cat "$case_dir/fixed.workdir")
  mkdir -p "$(dirname "$work")"
  exec 9>"$work.lock"
  flock 9
fi

rm -rf "$work"
mkdir -p "$work"
for f in "$case_dir"/* "$case_dir"/.[!.]*; do
  [ -e "$f" ] || continue
  name=$(basename "$f")
  case "$name" in
    cmd|stdin|generate|expected.*|absent.files|dump.object|dump.options|dwarfdump|fixed.workdir) ;;
    *) cp -R "$f" "$work/" ;;
  esac
done

if [ -f "$case_dir/generate" ]; then
  (cd "$work" && bash "$case_dir/generate") || { echo "generate failed"; exit 1; }
fi

args=""
[ -f "$case_dir/cmd" ] && args=$(cat "$case_dir/cmd")
stdin_file=/dev/null
[ -f "$case_dir/stdin" ] && stdin_file="$case_dir/stdin"

(cd "$work" && eval "exec \"\$vorp\" $args" <"$stdin_file" >"$work/.stdout" 2>"$work/.stderr")
status=$?

object=a.o
[ -f "$case_dir/dump.object" ] && object=$(cat "$case_dir/dump.object")
dump_tool="$(dirname "$vorp")/vorp-dump"
if [ -f "$case_dir/expected.dump" ]; then
  if [ -f "$work/$object" ]; then
    dump_options=""
    [ -f "$case_dir/dump.options" ] && dump_options=$(cat "$case_dir/dump.options")
    "$dump_tool" $dump_options "$work/$object" >"$work/.dump" 2>&1
  else
    echo "no object $object" >"$work/.dump"
  fi
fi

dwarf_skipped=0
if [ -f "$case_dir/dwarfdump" ]; then
  if ! command -v llvm-dwarfdump >/dev/null; then
    dwarf_skipped=1
  elif [ -f "$work/$object" ]; then
    (cd "$work" && "$dump_tool" --resolved resolved.o "$object" >/dev/null &&
      eval "llvm-dwarfdump $(cat "$case_dir/dwarfdump") resolved.o" 2>&1 |
      grep -v -e 'failed to compute relocation' -e 'No available targets are compatible') >"$work/.dwarfdump"
  else
    echo "no object $object" >"$work/.dwarfdump"
  fi
fi

if [ "${VORP_UPDATE_GOLDEN:-}" = 1 ]; then
  [ -f "$case_dir/dwarfdump" ] && [ -f "$work/.dwarfdump" ] && cp "$work/.dwarfdump" "$case_dir/expected.dwarfdump"
  [ -f "$case_dir/expected.dump" ] && cp "$work/.dump" "$case_dir/expected.dump"
  if [ "$status" -ne 0 ]; then echo "$status" >"$case_dir/expected.status"; else rm -f "$case_dir/expected.status"; fi
  for s in stderr stdout; do
    if [ -s "$work/.$s" ]; then cp "$work/.$s" "$case_dir/expected.$s"; else rm -f "$case_dir/expected.$s"; fi
  done
fi

failed=0
expected_status=0
[ -f "$case_dir/expected.status" ] && expected_status=$(cat "$case_dir/expected.status")
if [ "$status" != "$expected_status" ]; then
  echo "exit status: expected $expected_status, got $status"
  failed=1
fi
for s in stderr stdout; do
  expected=/dev/null
  [ -f "$case_dir/expected.$s" ] && expected="$case_dir/expected.$s"
  if ! diff -u --label "expected $s" --label "actual $s" "$expected" "$work/.$s"; then
    failed=1
  fi
done
if [ -f "$case_dir/expected.dump" ] && ! diff -u --label "expected dump" --label "actual dump" "$case_dir/expected.dump" "$work/.dump"; then
  failed=1
fi
if [ -f "$case_dir/dwarfdump" ] && [ "$dwarf_skipped" = 0 ] &&
  ! diff -u --label "expected dwarfdump" --label "actual dwarfdump" "$case_dir/expected.dwarfdump" "$work/.dwarfdump"; then
  failed=1
fi
for expected in "$case_dir"/expected.file.*; do
  [ -e "$expected" ] || continue
  name=${expected##*/expected.file.}
  if [ ! -f "$work/$name" ]; then
    echo "missing output file: $name"
    failed=1
  elif ! diff -u --label "expected $name" --label "actual $name" "$expected" "$work/$name"; then
    failed=1
  fi
done
if [ -f "$case_dir/expected.files" ]; then
  while IFS= read -r name; do
    [ -z "$name" ] && continue
    if [ ! -e "$work/$name" ]; then echo "missing output file: $name"; failed=1; fi
  done <"$case_dir/expected.files"
fi
if [ -f "$case_dir/absent.files" ]; then
  while IFS= read -r name; do
    [ -z "$name" ] && continue
    if [ -e "$work/$name" ]; then echo "file should not exist: $name"; failed=1; fi
  done <"$case_dir/absent.files"
fi
if [ "$failed" = 0 ] && [ "$dwarf_skipped" = 1 ]; then
  echo "llvm-dwarfdump not found: the DWARF check is skipped"
  exit 77
fi
exit $failed
