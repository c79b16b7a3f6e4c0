#!/usr/bin/env bash
# Builds the benchmarks (preset "bench", folder build/bench) and prints the tables of
# docs/PERFORMANCE.md. Sections: api, overhead, store, notify, startup (default: all of them).
#   scripts/bench.sh [SECTION ...]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
cmake --preset bench >/dev/null
cmake --build --preset bench -j "$(nproc)" >/dev/null
exec python3 bench/report.py --build build/bench "$@"
