#!/usr/bin/env bash
# Compiles the public header as C and as C++ for a 32-bit target, where the
# static assertions at its end check every record's byte offsets.
set -euo pipefail
cd "$(dirname "$0")/.."
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
printf '#include "titlerender.h"\nint main(void) { return 0; }\n' > "$tmp/h.c"
if ! echo 'int x;' | gcc -m32 -x c -c - -o "$tmp/probe.o" 2>/dev/null; then
  echo "check-header32: no 32-bit toolchain (gcc-multilib); skipped"
  exit 0
fi
gcc -m32 -std=c11 -Wall -Wextra -Werror -pedantic -Iinclude -c "$tmp/h.c" -o "$tmp/c.o"
g++ -m32 -std=c++20 -Wall -Wextra -Werror -pedantic -Iinclude -x c++ -c "$tmp/h.c" -o "$tmp/cpp.o"
echo "check-header32: 32-bit record layouts verified (C and C++)"
