#!/usr/bin/env bash
# run-ci.sh: builds the fuzz targets (clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer) in their own build folder and runs each one for a short
# while from its seed corpus with the shared dictionary (tpx1.dict): about a minute in
# all. New inputs go to a scratch folder, never into the committed corpus. Exits non-zero
# when any target crashes, hangs, leaks or fails one of its checks; the input that did it
# is kept in the artifacts folder.
#
# Settings (environment): TPX1_FUZZ_BUILD (build folder, default <repo>/build-fuzz),
# TPX1_FUZZ_SECONDS (per target, default 12), TPX1_FUZZ_ARTIFACTS (default
# <build>/artifacts), JOBS (build jobs, default 2).
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
build=${TPX1_FUZZ_BUILD:-$root/build-fuzz}
seconds=${TPX1_FUZZ_SECONDS:-12}
artifacts=${TPX1_FUZZ_ARTIFACTS:-$build/artifacts}
targets="entry vesk_event lst2 paths repform"

CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTPX1_FUZZ=ON -DTPX1_SANITIZE=ON -DTPX1_BUILD_TESTS=OFF -DTPX1_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" --target fuzz -j"${JOBS:-2}"

work=$(mktemp -d /tmp/tpx1-fuzz-ci.XXXXXX)
trap 'rm -rf "$work"' EXIT
mkdir -p "$artifacts"
status=0
for target in $targets; do
    mkdir -p "$work/$target"
    log="$work/$target.log"
    if "$build/fuzz_$target" "$work/$target" "$here/corpus/$target" \
        -dict="$here/tpx1.dict" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
        -artifact_prefix="$artifacts/$target-" -print_final_stats=1 >"$log" 2>&1; then
        runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
        echo "fuzz_$target: ${runs:-?} runs in ${seconds}s, no failure"
    else
        status=1
        echo "fuzz_$target: FAILED (input kept in $artifacts)"
        tail -n 60 "$log"
    fi
done
exit $status
