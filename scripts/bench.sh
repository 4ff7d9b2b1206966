#!/usr/bin/env bash
# Runs every benchmark built in $1 with repetitions and prints medians.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${1:-build}
for b in "$BUILD"/bench/bench_*; do
  [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b" --benchmark_repetitions="${BENCH_REPETITIONS:-5}" --benchmark_report_aggregates_only=true
done
