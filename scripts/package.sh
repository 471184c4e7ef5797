#!/usr/bin/env bash
# Builds what an installation holds and makes the Debian package with CPack:
#   scripts/package.sh            -> build/helptext_<version>_amd64.deb
# Install it with: sudo apt install ./build/helptext_*.deb
# HELPTEXT_BUILD_DIR chooses another build folder (default build/).
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD="${HELPTEXT_BUILD_DIR:-build}"
if ! command -v dpkg-shlibdeps >/dev/null; then
  echo "scripts/package.sh: dpkg-shlibdeps is missing (package dpkg-dev); run scripts/install-deps.sh" >&2
  exit 1
fi
cmake -S . -B "$BUILD" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$BUILD" -j"$(nproc)" --target helptext_installable
(cd "$BUILD" && cpack -G DEB | grep -v '^CPack: -')
ls "$BUILD"/helptext_*.deb
