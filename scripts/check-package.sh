#!/usr/bin/env bash
# Builds the Debian package, installs it on this machine with apt, starts the
# installed program on a virtual X display, checks that its window appears,
# and removes the package again. It changes the machine: run it on a test or
# build machine, as root (or with sudo at hand), not as part of the tests.
#   scripts/check-package.sh [DISPLAY_NUMBER]   (default 99)
# VEKLARI_PACKAGE_BUILD_DIR chooses the build directory (default build-package/).
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${VEKLARI_PACKAGE_BUILD_DIR:-$root/build-package}
display=:${1:-99}

as_root=()
if [[ $(id -u) -ne 0 ]]; then
    as_root=(sudo)
fi
if dpkg-query -W -f='${Status}' veklari 2>/dev/null | grep -q 'install ok installed'; then
    echo "The veklari package is installed already; remove it first." >&2
    exit 1
fi

"$root/scripts/install-deps.sh"
# The window check: the same pattern as install-deps.sh, for this script's tools only.
if ! command -v xdotool >/dev/null; then
    "${as_root[@]}" apt-get update
    DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y --no-install-recommends xdotool
fi

echo "== Building the package in $build"
# A build directory that exists already is used with the options it has.
if [[ ! -f $build/CMakeCache.txt ]]; then
    cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DVEKLARI_BUILD_TESTS=OFF -DVEKLARI_BUILD_BENCHMARKS=OFF >/dev/null
fi
cmake --build "$build" -j"$(nproc)" --target veklari veklari-cli
work=$(mktemp -d)
xvfb_pid=
program_pid=
installed=false
cleanup() {
    [[ -n $program_pid ]] && kill "$program_pid" 2>/dev/null
    [[ -n $xvfb_pid ]] && kill "$xvfb_pid" 2>/dev/null
    # A failed check leaves the machine as it found it.
    if $installed; then
        DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get purge -y veklari >/dev/null 2>&1
    fi
    rm -rf "$work"
}
trap cleanup EXIT
(cd "$build" && cpack -G DEB -B "$work/package" >/dev/null)
deb=$(ls "$work"/package/*.deb)

echo "== Installing $(basename "$deb")"
installed=true
DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y "$deb"
for path in /usr/bin/veklari /usr/bin/veklari-cli /usr/share/applications/fi.veklari.Veklari.desktop; do
    [[ -e $path ]] || { echo "FAIL: $path was not installed" >&2; exit 1; }
done
veklari-cli --version

echo "== Starting the installed program on display $display"
Xvfb "$display" -screen 0 1280x1024x24 -nolisten tcp >"$work/xvfb.log" 2>&1 &
xvfb_pid=$!
sleep 1
# A home of its own: the first start creates its configuration and database there.
mkdir -p "$work/home"
HOME=$work/home XDG_CONFIG_HOME=$work/home/.config DISPLAY=$display QT_QPA_PLATFORM=xcb \
    /usr/bin/veklari >"$work/veklari.log" 2>&1 &
program_pid=$!
window=
for _ in $(seq 1 60); do
    window=$(DISPLAY=$display xdotool search --onlyvisible --name 'Veklari$' 2>/dev/null | head -1 || true)
    [[ -n $window ]] && break
    kill -0 "$program_pid" 2>/dev/null || break
    sleep 0.5
done
if [[ -z $window ]]; then
    echo "FAIL: no Veklari window appeared" >&2
    cat "$work/veklari.log" >&2
    exit 1
fi
echo "Window $window: $(DISPLAY=$display xdotool getwindowname "$window")"
kill "$program_pid"
wait "$program_pid" 2>/dev/null || true
program_pid=

echo "== Removing the package"
DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get purge -y veklari
installed=false
if dpkg-query -W -f='${Status}' veklari 2>/dev/null | grep -q 'install ok installed'; then
    echo "FAIL: veklari is still installed" >&2
    exit 1
fi
for path in /usr/bin/veklari /usr/bin/veklari-cli /usr/share/applications/fi.veklari.Veklari.desktop \
    /usr/share/metainfo/fi.veklari.Veklari.metainfo.xml /usr/share/icons/hicolor/48x48/apps/veklari.png; do
    [[ ! -e $path ]] || { echo "FAIL: $path is left behind" >&2; exit 1; }
done
echo "The package installed, started and was removed cleanly."
