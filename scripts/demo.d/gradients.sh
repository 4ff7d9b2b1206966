#!/usr/bin/env bash
# Gradient generator samples: gradients.sh <build dir> <output dir>
set -euo pipefail
BUILD=${1:?build directory}
OUT=${2:?output directory}
mkdir -p "$OUT"
"$BUILD/tools/demo/gradient_demo" "$OUT"
