#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a bounded time.
# FUZZ_SECONDS overrides the per-target budget.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ -z "$(ls fuzz/*.cpp 2>/dev/null)" ]; then
  echo "fuzz-short: no fuzz targets yet"
  exit 0
fi
SECONDS_PER_TARGET=${FUZZ_SECONDS:-60}
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTR_BUILD_FUZZ=ON \
  -DTR_BUILD_TESTS=OFF -DTR_BUILD_BENCH=OFF -DTR_BUILD_TOOLS=OFF > build-fuzz.configure.log
cmake --build build-fuzz -j"$(nproc)"
for target in build-fuzz/fuzz/fuzz_*; do
  [ -x "$target" ] || continue
  name=$(basename "$target")
  corpus="fuzz/corpus/${name#fuzz_}"
  work="build-fuzz/corpus-run/${name#fuzz_}"
  mkdir -p "$work"
  [ -d "$corpus" ] && cp -r "$corpus"/. "$work"/ 2>/dev/null || true
  echo "fuzz-short: $name for ${SECONDS_PER_TARGET}s"
  "$target" -max_total_time="$SECONDS_PER_TARGET" -rss_limit_mb=2048 -print_final_stats=1 "$work" 2>&1 | tail -n 12
done
