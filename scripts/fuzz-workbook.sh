#!/usr/bin/env bash
# Fuzzes the workbook reader with libFuzzer (clang, AddressSanitizer and
# UndefinedBehaviorSanitizer), starting from the test workbooks.
#   scripts/fuzz-workbook.sh [seconds]     default 30; e.g. 3600 for a long run
# Findings (crashes, leaks, timeouts) are written to build/fuzz/findings and
# make the script fail. The corpus grows in build/fuzz/corpus between runs.
set -euo pipefail
cd "$(dirname "$0")/.."
SECONDS_TO_RUN="${1:-30}"
OUT=build/fuzz
mkdir -p "$OUT/corpus" "$OUT/findings"
CXX="$(command -v clang++-14 || command -v clang++)"
SOURCES=(tests/fuzz/workbook_fuzzer.cpp src/importer/Workbook.cpp src/importer/BiffReader.cpp
         src/importer/XlsxReader.cpp src/common/CodePage.cpp src/common/FileIo.cpp)
# Rebuilt only when a source changed.
if [ ! -x "$OUT/workbook_fuzzer" ] || [ -n "$(find "${SOURCES[@]}" src/importer/*.h -newer "$OUT/workbook_fuzzer")" ]; then
  "$CXX" -std=c++20 -g -O1 -fPIC -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -Isrc $(pkg-config --cflags Qt6Core libgsf-1) "${SOURCES[@]}" \
    $(pkg-config --libs Qt6Core libgsf-1) -o "$OUT/workbook_fuzzer"
fi
cp -n tests/data/xls/* tests/importer/data/*.xls tests/importer/data/*.xlsx "$OUT/corpus/" 2>/dev/null || true
# Leaks in libgsf's one-time type registration are not the reader's.
export ASAN_OPTIONS="detect_leaks=0"
"$OUT/workbook_fuzzer" "$OUT/corpus" -max_total_time="$SECONDS_TO_RUN" -max_len=1048576 -timeout=10 \
  -rss_limit_mb=2048 -artifact_prefix="$OUT/findings/" -print_final_stats=1 2>&1 | tail -n 25
