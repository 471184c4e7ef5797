#!/usr/bin/env bash
# Fuzzes a reader of files from elsewhere with libFuzzer (clang, AddressSanitizer
# and UndefinedBehaviorSanitizer), starting from the test files:
#   scripts/fuzz.sh workbook [seconds]   the workbook reader (.xls, .xlsx)
#   scripts/fuzz.sh jet [seconds]        the Access (Jet 4) page code of the writer
# Seconds default to 30; e.g. 3600 for a long run. Findings (crashes, leaks,
# timeouts) are written to build/fuzz/<target>/findings and make the script
# fail; the run's statistics are in build/fuzz/<target>/last-run.log. The corpus grows in build/fuzz/<target>/corpus between runs.
set -euo pipefail
cd "$(dirname "$0")/.."
TARGET="${1:?usage: scripts/fuzz.sh workbook|jet [seconds]}"
SECONDS_TO_RUN="${2:-30}"
case "$TARGET" in
  workbook)
    SOURCES=(tests/fuzz/workbook_fuzzer.cpp src/importer/Workbook.cpp src/importer/BiffReader.cpp
             src/importer/XlsxReader.cpp src/common/CodePage.cpp src/common/FileIo.cpp)
    HEADERS=(src/importer/*.h)
    SEEDS=(tests/data/xls/* tests/importer/data/*.xls tests/importer/data/*.xlsx)
    PACKAGES="Qt6Core libgsf-1" ;;
  jet)
    SOURCES=(tests/fuzz/jet_fuzzer.cpp src/database/jet/*.cpp src/common/FileIo.cpp)
    HEADERS=(src/database/jet/*.h)
    SEEDS=(tests/data/jet/*.mdb)
    PACKAGES="Qt6Core" ;;
  *) echo "scripts/fuzz.sh: no fuzz target $TARGET (workbook or jet)" >&2; exit 2 ;;
esac
OUT="build/fuzz/$TARGET"
mkdir -p "$OUT/corpus" "$OUT/findings"
CXX="$(command -v clang++-14 || command -v clang++)"
# Rebuilt only when a source changed.
if [ ! -x "$OUT/fuzzer" ] || [ -n "$(find "${SOURCES[@]}" "${HEADERS[@]}" -newer "$OUT/fuzzer")" ]; then
  "$CXX" -std=c++20 -g -O1 -fPIC -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -Isrc $(pkg-config --cflags $PACKAGES) "${SOURCES[@]}" $(pkg-config --libs $PACKAGES) -o "$OUT/fuzzer"
fi
cp -n "${SEEDS[@]}" "$OUT/corpus/" 2>/dev/null || true
# Leaks in libgsf's one-time type registration are not the reader's.
export ASAN_OPTIONS="detect_leaks=0"
# The run's output and statistics go to a log; one line says how it went.
LOG="$OUT/last-run.log"
status=0
"$OUT/fuzzer" "$OUT/corpus" -max_total_time="$SECONDS_TO_RUN" -max_len=1048576 -timeout=10 \
  -rss_limit_mb=4096 -artifact_prefix="$OUT/findings/" -print_final_stats=1 >"$LOG" 2>&1 || status=$?
runs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$LOG")"
if [ "$status" != 0 ]; then
  tail -n 25 "$LOG"
  echo "fuzz $TARGET: FAILED after ${runs:-?} inputs; findings in $OUT/findings, log $LOG" >&2
  exit "$status"
fi
echo "fuzz $TARGET: ${runs:-?} inputs in $SECONDS_TO_RUN s, no findings (log $LOG)"
