#!/bin/sh
# Runs the fuzz targets one after the other under sanitizers: scripts/fuzz.sh [SECONDS [TARGET...]]. What they
# find stays in build/fuzz/findings/; new inputs worth keeping go into tests/fuzz/corpus/ by hand.
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-600}
[ $# -gt 0 ] && shift

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
mkdir -p build/fuzz/findings
if [ $# -eq 0 ]; then
    for corpus in tests/fuzz/corpus/*; do set -- "$@" "${corpus##*/}"; done
fi
failed=""
for target in "$@"; do
    echo "== $target"
    work=build/fuzz/corpus/$target
    mkdir -p "$work"
    build/fuzz/bin/fuzz_"$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -max_len=65536 \
        -print_final_stats=1 -artifact_prefix=build/fuzz/findings/"$target"- \
        "$work" tests/fuzz/corpus/"$target" 2>build/fuzz/"$target".log || failed="$failed $target"
    grep -E '^stat::number_of_executed_units|^SUMMARY|^Done' build/fuzz/"$target".log || true
done
[ -z "$failed" ] || { echo "Findings in:$failed" >&2; exit 1; }
