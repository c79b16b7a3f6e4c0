#!/usr/bin/env bash
# Runs the stress and fault tests (label "stress") on the optimised build, SCALE times larger than CI
# runs them: SCALE x 200 kills of a writer, 16 writers x SCALE x 100 keys; then prints the figures
# of docs/RELIABILITY.md. Needs root (the fault tests mount file systems), as CI has.
#   scripts/stress.sh [SCALE]        default 10
# MXRK7_STRESS_DIR=FOLDER runs the concurrency test there instead of on /dev/shm (a disk, say);
# MXRK7_STRESS_SEED=N repeats a crash test run's kill moments.
set -euo pipefail
cd "$(dirname "$0")/.."
scale=${1:-10}
scripts/bootstrap.sh
cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc)" >/dev/null
log=$(mktemp)
trap 'rm -f "$log"' EXIT
status=0
MXRK7_TEST_SCALE=$scale ctest --preset release -L stress --timeout 7200 -V >"$log" 2>&1 || status=$?
grep -E '^[0-9]+: (crash safety|concurrency)' "$log" | sed 's/^[0-9]*: //'
grep -E 'tests passed|\*\*\*Failed|Passed +[0-9.]+ sec' "$log"
[ "$status" -eq 0 ] || { echo "failures: see the output of ctest --preset release -L stress --output-on-failure"; }
exit "$status"
