#!/usr/bin/env bash
# Installs what is missing, builds the program and starts it. Arguments are
# passed to the program: scripts/run.sh [-c CONFIG] [NUMBER]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${VEKLARI_BUILD_DIR:-$root/build}

"$root/scripts/install-deps.sh"

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DVEKLARI_BUILD_TESTS=OFF -DVEKLARI_BUILD_BENCHMARKS=OFF
cmake --build "$build" -j"$(nproc)" --target veklari

program=("$build/src/veklari" "$@")
if [[ -z "${DISPLAY:-}" && -z "${WAYLAND_DISPLAY:-}" && -z "${QT_QPA_PLATFORM:-}" ]]; then
    # No desktop session (e.g. a server over ssh): run on a virtual display.
    echo "No display found; starting Veklari on a virtual X display (xvfb-run)." >&2
    exec xvfb-run -a "${program[@]}"
fi
exec "${program[@]}"
