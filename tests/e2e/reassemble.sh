#!/usr/bin/env bash
# The round trip of the disassembler: for an object, `vorp-dump -d --reassemble` writes source that
# vorp assembles to the same bytes in every code section.
#
#   reassemble.sh VORP WORK cases CASES_DIR   every golden case whose command assembles an object
#   reassemble.sh VORP WORK bench GEN.PY      bench/gen.py's output, plain and with jump tables
set -u
vorp=$1
work=$2
mode=$3
source=$4
dump="$(dirname "$vorp")/vorp-dump"

# The "Contents of section" blocks of the sections whose flags hold x, from vorp-dump's output.
code_contents() {
  "$dump" "$1" | awk '
    /^Sections:/ { sections = 1; next }
    sections && /^  [0-9]+: / { if ($4 ~ /x/) code[$2] = 1; next }
    /^Contents of section / { sections = 0; name = $4; sub(/:$/, "", name); show = (name in code); if (show) print; next }
    /^  [0-9a-f]+:/ { if (show) print; next }
    /^[A-Z]/ { sections = 0; show = 0 }'
}

failed=0
checked=0
# Reassembles the object $2 in folder $1; $3 names it in messages.
round_trip() {
  local dir=$1 object=$2 name=$3
  if ! "$dump" -d "$dir/$object" >"$dir/listing.txt" 2>&1; then
    echo "$name: vorp-dump -d failed"; failed=1; return
  fi
  if ! "$dump" -d --reassemble "$dir/$object" >"$dir/reassembled.S" 2>"$dir/reassembled.err"; then
    echo "$name: vorp-dump -d --reassemble failed"; cat "$dir/reassembled.err"; failed=1; return
  fi
  if ! (cd "$dir" && "$vorp" reassembled.S -o reassembled.o >reassembled.out 2>&1); then
    echo "$name: the reassembled source does not assemble"; head -20 "$dir/reassembled.out"; failed=1; return
  fi
  code_contents "$dir/$object" >"$dir/code.original"
  code_contents "$dir/reassembled.o" >"$dir/code.reassembled"
  if ! diff -u --label "$name original" --label "$name reassembled" "$dir/code.original" "$dir/code.reassembled" |
    head -40; then
    :
  fi
  if ! cmp -s "$dir/code.original" "$dir/code.reassembled"; then
    failed=1; return
  fi
  checked=$((checked + 1))
}

rm -rf "$work"
mkdir -p "$work"
case "$mode" in
cases)
  for case_dir in "$source"/*/; do
    name=$(basename "$case_dir")
    # Inputs written or generated; not the robustness inputs at the limits, which are slow and hold
    # little code.
    [ -f "$case_dir/a.S" ] || [ -f "$case_dir/generate" ] || continue
    case "$name" in robust_*) continue ;; esac
    dir="$work/$name"
    mkdir -p "$dir"
    for f in "$case_dir"* "$case_dir".[!.]*; do
      [ -e "$f" ] || continue
      case "$(basename "$f")" in
        cmd|stdin|generate|expected.*|absent.files|dump.object|dump.options|dwarfdump|fixed.workdir) ;;
        *) cp -R "$f" "$dir/" ;;
      esac
    done
    [ -f "$case_dir/generate" ] && (cd "$dir" && bash "$case_dir/generate" >/dev/null 2>&1)
    args=""
    [ -f "$case_dir/cmd" ] && args=$(cat "$case_dir/cmd")
    stdin_file=/dev/null
    [ -f "$case_dir/stdin" ] && stdin_file="$case_dir/stdin"
    rm -f "$dir/a.o"
    (cd "$dir" && eval "exec \"\$vorp\" $args" <"$stdin_file" >/dev/null 2>&1) || continue
    object=a.o
    [ -f "$case_dir/dump.object" ] && object=$(cat "$case_dir/dump.object")
    [ -f "$dir/$object" ] || continue
    round_trip "$dir" "$object" "$name"
  done
  # Most cases that assemble have code; a handful must have been checked.
  if [ "$checked" -lt 20 ]; then echo "only $checked cases round-tripped"; failed=1; fi
  ;;
bench)
  command -v python3 >/dev/null || { echo "python3 not found: skipped"; exit 77; }
  for variant in plain switch; do
    dir="$work/$variant"
    mkdir -p "$dir"
    options=""
    [ "$variant" = switch ] && options=--switch
    python3 "$source" 10000 "$dir/gen.S" $options || { echo "gen.py failed"; exit 1; }
    (cd "$dir" && "$vorp" gen.S -o gen.o) || { echo "$variant: vorp failed"; failed=1; continue; }
    round_trip "$dir" gen.o "gen.py 10000 $options"
    # Every jump table of the switch variant is found, with all of its entries, in source order.
    if [ "$variant" = switch ]; then
      awk '$1 == ".jmptable" { print NF - 1 }' "$dir/gen.S" >"$dir/tables.source"
      sed -n 's/^  # jump table 0x[0-9a-f]*: \([0-9]*\) entries$/\1/p' "$dir/listing.txt" >"$dir/tables.listing"
      if [ ! -s "$dir/tables.source" ] || ! cmp -s "$dir/tables.source" "$dir/tables.listing"; then
        echo "jump tables: the entries of each table in the source and as marked differ"
        diff "$dir/tables.source" "$dir/tables.listing" | head -10
        failed=1
      fi
    fi
  done
  ;;
esac
echo "$checked objects round-tripped"
exit $failed
