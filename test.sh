#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite through CTest.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh
scripts/build.sh
cd build
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j2
cd ..
# The workbook reader and the Access page code take files from anywhere: 30 seconds
# of fuzzing each on every run.
scripts/fuzz.sh workbook 30
scripts/fuzz.sh jet 30
