#!/usr/bin/env bash
# The whole test suite: installs what is missing, builds with AddressSanitizer and UBSan, runs every
# test, then the fuzz targets for a bounded time.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
jobs=$(nproc)

cmake --preset dev
cmake --build --preset dev -j "$jobs"
ctest --preset dev

# Optimised build: the install and consumer check (with the examples); the API tests under valgrind;
# the crash and concurrency stress tests; a smoke run of the benchmarks (built here, measured by
# scripts/bench.sh). Only what these tests need is built: the other test programs ran in the
# sanitizer build. The API reference is built with it; any Doxygen warning fails the build.
cmake --preset release -DMXRK7_BUILD_DOCS=ON
cmake --build --preset release -j "$jobs" --target release_checks api-reference
ctest --preset release -L release

# The Debian packages from their own build (the README's command), checked with lintian, installed,
# used and purged. The check needs root and a machine without these packages; elsewhere it says it
# skipped (exit 77).
cmake --workflow --preset package
tests/packaging/check_packages.sh build/package || [ $? -eq 77 ]

# The fuzz targets alone (the rest of the project was built and tested above), each run for a bounded
# time, two at once.
cmake --preset fuzz
cmake --build --preset fuzz -j "$jobs" --target fuzz_targets
ctest --test-dir build/fuzz --output-on-failure -j "$jobs"
