#!/usr/bin/env bash
# Configures and builds into build/ (Release-with-debug-info): everything, or
# only the targets named (scripts/build.sh helptext-editor ...).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
if [ $# -gt 0 ]; then
  cmake --build build -j"$(nproc)" --target "$@"
else
  cmake --build build -j"$(nproc)"
fi
