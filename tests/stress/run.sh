#!/usr/bin/env bash
# The fixed-seed stress run of the test suite: a few thousand mutated inputs through the sanitizer
# build. Skipped (status 77) on a machine without python3.
set -u
command -v python3 >/dev/null || { echo "python3 not found: the stress run is skipped"; exit 77; }
exec python3 "$(dirname "$0")/stress.py" "$@"
