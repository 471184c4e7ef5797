#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite through CTest.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh
scripts/build.sh
cd build
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j2
cd ..
# The workbook reader takes files from anywhere: 30 seconds of fuzzing on every run.
scripts/fuzz-workbook.sh 30
