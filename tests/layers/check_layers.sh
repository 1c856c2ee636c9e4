#!/usr/bin/env bash
# Holds the order of the source folders: every #include "..." in src/, tools/ and the public headers
# of include/ points down the list below, or sideways within its own folder. Prints each include
# that points up and fails.
#
#   check_layers.sh ROOT     checks ROOT/include, ROOT/src and ROOT/tools
set -u
root=${1:?usage: check_layers.sh ROOT}

# Bottom to top. A folder may include itself and anything before it; include/vorp, the public
# headers, come first and need nothing of the rest.
layers=(vorp diag elf isa frontend model encoding schedule layout debug metadata emit assembler driver)
# The object inspector stands beside the assembler and uses only these.
tool_uses=(diag elf isa)

rank() {
  local i
  for i in "${!layers[@]}"; do
    if [ "${layers[$i]}" = "$1" ]; then
      echo "$i"
      return
    fi
  done
  echo -1
}

status=0
report() {
  echo "$1: includes \"$2\": $3"
  status=1
}

while IFS= read -r -d '' file; do
  relative=${file#"$root"/}
  top=${relative%%/*}
  rest=${relative#*/}
  folder=${rest%%/*}
  while IFS= read -r target; do
    [ "$target" = "${target#*/}" ] && continue # a name without a folder is its own folder's
    target_folder=${target%%/*}
    [ "$target_folder" = "$folder" ] && continue
    if [ "$top" = tools ]; then
      allowed=0
      for use in "${tool_uses[@]}"; do
        [ "$use" = "$target_folder" ] && allowed=1
      done
      [ "$allowed" = 1 ] || report "$relative" "$target" "tools use only ${tool_uses[*]}"
      continue
    fi
    from=$(rank "$folder")
    to=$(rank "$target_folder")
    if [ "$from" -lt 0 ]; then
      report "$relative" "$target" "folder '$folder' has no place in the layers"
    elif [ "$to" -lt 0 ]; then
      report "$relative" "$target" "folder '$target_folder' has no place in the layers"
    elif [ "$to" -gt "$from" ]; then
      report "$relative" "$target" "'$target_folder' is above '$folder'"
    fi
  done < <(sed -n 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*"\([^"]*\)".*/\1/p' "$file")
done < <(find "$root/src" "$root/tools" "$root/include" -type f 2> /dev/null \( -name '*.h' -o -name '*.cpp' \) -print0 | sort -z)

if [ "$status" = 0 ]; then
  echo "every include points down (${layers[*]})"
fi
exit "$status"
