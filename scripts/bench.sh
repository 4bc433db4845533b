#!/bin/sh
# Runs every benchmark program, one after the other. What they write goes into a folder that is removed.
set -eu
cd "$(dirname "$0")/.."
TMPDIR=$(mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
for program in build/bench/bin/*bench; do
    "$program" "$@"
done
