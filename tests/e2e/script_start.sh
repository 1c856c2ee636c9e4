# The start of a script test, sourced by it: `vorp` and `work` from its arguments, a fresh working
# folder as the current one, and `problem` to report a fault (the script ends with `exit $fail`).
set -u
vorp=$1
work=$2
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 1
fail=0
problem() { echo "$*"; fail=1; }
