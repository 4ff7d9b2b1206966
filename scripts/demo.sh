#!/usr/bin/env bash
# Renders the sample images with the tools built in $1 into out/.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${1:-build}
mkdir -p out
ran=0
for demo in scripts/demo.d/*.sh; do
  [ -e "$demo" ] || continue
  bash "$demo" "$BUILD" out
  ran=1
done
if [ "$ran" -eq 0 ]; then
  echo "demo: library built at $BUILD/libtitlerender.so; no sample renderers yet"
else
  echo "demo: images written to $(pwd)/out/"
  ls -1 out
fi
