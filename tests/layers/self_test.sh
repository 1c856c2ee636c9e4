#!/usr/bin/env bash
# The layer check must name an include that points up, and pass a tree whose includes point down.
set -u
here=$(cd "$(dirname "$0")" && pwd)
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree/src/model" "$tree/src/layout" "$tree/tools/vorp-dump" "$tree/include/vorp"
printf '#include "model/VormLine.h"\n#include "Local.h"\n' > "$tree/src/layout/Iteration.cpp"
printf '#include "elf/ElfHandler.h"\n#include "isa/Encoder.h"\n' > "$tree/tools/vorp-dump/Dump.cpp"
printf '#include "vorp/Options.h"\n' > "$tree/include/vorp/Api.h"
if ! bash "$here/check_layers.sh" "$tree" > /dev/null; then
  echo "FAIL: a tree whose includes point down was refused"
  exit 1
fi
printf '#include "diag/Location.h"\n  #  include "layout/SizeIteration.h" // up\n' > "$tree/src/model/VormSection.h"
printf '#include "model/VormSection.h"\n' >> "$tree/tools/vorp-dump/Dump.cpp"
printf '#include "diag/Location.h"\n' >> "$tree/include/vorp/Api.h"
expected='include/vorp/Api.h: includes "diag/Location.h": '"'"'diag'"'"' is above '"'"'vorp'"'"'
src/model/VormSection.h: includes "layout/SizeIteration.h": '"'"'layout'"'"' is above '"'"'model'"'"'
tools/vorp-dump/Dump.cpp: includes "model/VormSection.h": tools use only diag elf isa'
actual=$(bash "$here/check_layers.sh" "$tree")
status=$?
if [ "$status" = 0 ] || [ "$actual" != "$expected" ]; then
  echo "FAIL: status $status, output:"
  echo "$actual"
  exit 1
fi
echo "ok"
