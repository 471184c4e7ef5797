#!/usr/bin/env bash
# Installs the Debian 12 packages the project needs, only those that are missing.
set -euo pipefail

PACKAGES=(
  build-essential cmake pkg-config ccache
  qt6-base-dev libqt6sql6-sqlite qt6-qpa-plugins libgl-dev
  libgtest-dev libbenchmark-dev
  mdbtools-dev libglib2.0-dev libgsf-1-dev
  fonts-liberation fontconfig
  sqlite3 libsqlite3-dev
  clang-14 libclang-rt-14-dev
  libhunspell-dev hunspell-en-us hunspell-de-de hunspell-el hunspell-ru hunspell-fr
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
echo "Installing: ${missing[*]}"
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get update -qq
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
