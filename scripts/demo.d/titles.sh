#!/usr/bin/env bash
# Title samples through the titlerender CLI: titles.sh <build dir> <output dir>
set -euo pipefail
BUILD=${1:?build directory}
OUT=${2:?output directory}
CLI="$BUILD/tools/cli/titlerender"
mkdir -p "$OUT"
"$CLI" --text "Hello, Titles!" --size 64 --fill FFFFD040 --outline out --outline-width 3 \
  --outline-colour FF202060 --shadow-angle 135 --shadow-distance 6 --background FF305070 \
  --out "$OUT/title_outline_shadow.png" > /dev/null
"$CLI" --text "Transparent AVWay" --size 56 --fill FF40C0FF --out "$OUT/title_transparent.png" > /dev/null
"$CLI" --text "Inner outline" --font /usr/share/fonts/truetype/dejavu/DejaVuSerif.ttf --size 72 \
  --width 720 --fill FFFFFFFF --outline in --outline-width 1.5 --outline-colour FFC02020 \
  --background FF202020 --out "$OUT/title_inner_serif.png" > /dev/null
