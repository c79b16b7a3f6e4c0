#!/usr/bin/env bash
# Runs every crafted settings file (deep nesting, entity tricks, binary reference bombs, ...; see
# tests/support/crafted_files.cpp) against a getter and a setter, each call in a process of its own,
# on the main thread and on a thread with a 256 KiB stack, and prints the wall and CPU time and the
# memory each call added at its peak. Exit status 1 when a call crashed or took more than 0.1 s or
# 32 MiB. The files live on a tmpfs (MXRK7_CRAFTED_DIR, default /dev/shm), so the figures are the
# reader's work and not the disk's fsync.
#   scripts/crafted-files.sh [NAME-PART]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
cmake --preset bench >/dev/null
cmake --build --preset bench -j "$(nproc)" --target crafted_files_report >/dev/null
TMPDIR=${MXRK7_CRAFTED_DIR:-/dev/shm} exec build/bench/bin/crafted_files_report "$@"
