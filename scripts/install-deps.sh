#!/usr/bin/env bash
# Installs the Debian packages the build, the tests, the demo, the benchmarks
# and the fuzzers need. Does nothing when everything is already present, so
# `make demo` and `make test` can call it on every run.
set -euo pipefail

PACKAGES=(
  build-essential g++ cmake make pkg-config
  clang libclang-rt-14-dev            # second compiler, libFuzzer, sanitizer runtimes
  g++-multilib                        # 32-bit compile check of the public header
  libglu1-mesa-dev                    # polygon tessellator
  libboost-dev                        # shared_ptr, bind
  libfreetype-dev fonts-dejavu-core   # glyph source for the CLI, tests and benchmarks
  libpng-dev                          # PNG output of the CLI
  libgtest-dev libgmock-dev           # unit tests
  libbenchmark-dev                    # benchmarks
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -y
$SUDO apt-get install -y --no-install-recommends "${missing[@]}"
