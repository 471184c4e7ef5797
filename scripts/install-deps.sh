#!/usr/bin/env bash
# Installs the Debian 12 packages the project needs, only those that are missing.
set -euo pipefail

PACKAGES=(
  build-essential cmake pkg-config ccache
  qt6-base-dev libqt6sql6-sqlite qt6-qpa-plugins libgl-dev
  libgtest-dev libbenchmark-dev
  mdbtools-dev libglib2.0-dev libgsf-1-dev
  fonts-liberation fonts-dejavu-core fontconfig
  sqlite3 libsqlite3-dev
  desktop-file-utils appstream
  clang-14 libclang-rt-14-dev
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null; then
    cat >&2 <<EOF
These Debian packages are missing: ${missing[*]}
Installing them needs root, and this system has no sudo. Either run the same
command as root, or have them installed and start again:
  su -c 'apt-get install ${missing[*]}'
EOF
    exit 1
  fi
  SUDO="sudo"
fi
echo "Installing: ${missing[*]}"
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get update -qq
$SUDO env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
