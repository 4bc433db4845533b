#!/bin/sh
# Runs every benchmark program, one after the other.
set -eu
cd "$(dirname "$0")/.."
for program in build/bench/bin/*bench; do
    "$program" "$@"
done
