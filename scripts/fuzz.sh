#!/usr/bin/env bash
# Long runs of every fuzz target (CI runs each for 20 s): SECONDS each, new inputs kept in the
# build's work folders, findings in build/fuzz/tests/fuzz/artifacts/. A finding is a regression test
# once it is copied into the target's corpus as tests/fuzz/corpus/<target>/regression_<what>.
#   scripts/fuzz.sh [SECONDS]        default 600
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-600}
scripts/bootstrap.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$(nproc)" >/dev/null
out=build/fuzz/tests/fuzz
for target in store_reader virtual_config notification_payload; do
  dict=()
  [ -f "tests/fuzz/$target.dict" ] && dict=(-dict="tests/fuzz/$target.dict")
  mkdir -p "$out/${target}_work" "$out/artifacts"
  echo "== $target: $seconds s"
  "build/fuzz/bin/${target}_fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -jobs=1 \
    "${dict[@]}" -artifact_prefix="$out/artifacts/" "$out/${target}_work" "tests/fuzz/corpus/$target"
done
