#!/usr/bin/env bash
# Installs the Debian 12 packages that building, running and testing need, and only those that are missing.
set -euo pipefail

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev qt6-serialport-dev
    libsqlite3-dev sqlite3
    libenchant-2-dev hunspell-en-us
    libgtest-dev libgmock-dev libbenchmark-dev
    util-linux
    clang-format clang-tidy
    xvfb xauth xdotool imagemagick
    socat openssl
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

echo "Installing: ${missing[*]}"
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
if ! "${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"; then
    "${as_root[@]}" apt-get update -q
    "${as_root[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
