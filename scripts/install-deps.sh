#!/usr/bin/env bash
# Installs the Debian 12 packages that building, running and testing Veklari
# need. Only missing packages are installed, so a prepared machine does no
# network work at all.
set -euo pipefail

PACKAGES=(
    cmake g++ make pkg-config
    qt6-base-dev libqt6sql6-sqlite libqt6sql6-psql qt6-translations-l10n
    duktape-dev libxml2-dev libqrencode-dev libbenchmark-dev
    postgresql poppler-utils libxml2-utils fonts-liberation2
    xvfb xauth clang-format xdg-utils zbar-tools
    dpkg-dev desktop-file-utils appstream lintian
)

missing=()
for package in "${PACKAGES[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    if [[ "$status" != "install ok installed" ]]; then
        missing+=("$package")
    fi
done

if ((${#missing[@]} == 0)); then
    exit 0
fi

as_root=()
if [[ $(id -u) -ne 0 ]]; then
    if ! command -v sudo >/dev/null; then
        echo "Missing packages: ${missing[*]}" >&2
        echo "Run this script as root or install sudo." >&2
        exit 1
    fi
    as_root=(sudo)
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update
"${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
