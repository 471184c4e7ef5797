#!/usr/bin/env bash
# Installs what is missing, builds, runs the whole test suite through CTest,
# fuzzes the readers of files from elsewhere, and makes the Debian package
# when dpkg-deb is there. Ends with one line saying what ran and passed.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh
scripts/build.sh
cd build
status=0
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j2 | tee ctest.log || status=$?
passed="$(grep -E '^[0-9]+% tests passed' ctest.log | tail -n 1)"
if [ "$status" != 0 ]; then
  echo "test.sh: FAILED in CTest: ${passed:-see above}" >&2
  exit "$status"
fi
cd ..
# The workbook reader and the Access page code take files from anywhere: 30 seconds
# of fuzzing each on every run.
scripts/fuzz.sh workbook 30
scripts/fuzz.sh jet 30
package="no package (dpkg-deb missing)"
if command -v dpkg-deb >/dev/null && command -v dpkg-shlibdeps >/dev/null; then
  rm -f build/helptext_*.deb
  (cd build && cpack -G DEB >cpack.log 2>&1)
  deb="$(ls build/helptext_*.deb)"
  echo "Contents of $deb:"
  dpkg-deb -c "$deb" | awk '$1 !~ /^d/ {print "  " $6}'
  package="package $(basename "$deb") ($(dpkg-deb -c "$deb" | grep -vc '^d') files)"
fi
echo "test.sh: passed: CTest ($passed); fuzzing 30 s each of workbook and jet without findings; $package"
