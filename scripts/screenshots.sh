#!/usr/bin/env bash
# Renews the screenshots of the user guide (docs/screenshots/) from the real
# program: builds it, makes a sample company (a seller with a bank account,
# customers, products and invoices) in a temporary directory, starts Veklari
# on a virtual X display, opens each window with its keys and captures it.
#   scripts/screenshots.sh [DISPLAY_NUMBER]   (default 99)
# VEKLARI_BUILD_DIR chooses the build directory (default build/).
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${VEKLARI_BUILD_DIR:-$root/build}
out=$root/docs/screenshots
display=:${1:-99}

# One line a screenshot: the file name, the keys that open the window (typed
# in the main window, each word one xdotool key, or click:X,Y for a click at
# that point of the window), the title of the window to capture (an extended
# regular expression) and the keys that close it again.
shots() {
    shot main-window "" 'Veklari$' ""
    shot settings-dialog "alt+a y" '^Asetukset$' "Escape"
    shot settings-invoice-form "alt+a y ctrl+Tab ctrl+Tab" '^Asetukset$' "Escape"
    shot print-preview "F9" '^Tulosteen esikatselu' "Escape"
    shot export-dialog "alt+t i" '^Vie laskut$' "Escape"
    shot customers-dialog "alt+a a" '^Asiakkaat$' "Escape"
    shot email-settings "alt+a s" '^S.*hk.*postiasetukset$' "Escape"
    # The sample company's bank file is the remembered one: the file dialog
    # opens on it, and Return takes it.
    shot payment-import "ctrl+i alt+t Return" '^Maksusuoritusten tuonti$' "Escape"
    # The time entries are read from the remembered directory on opening.
    shot ravelo-dialog "alt+t r" '^Ravelo-aineiston tuonti$' "Escape"
    # Two customers chosen by hand; the sample company has a group too.
    shot group-invoicing "ctrl+r alt+a End alt+v alt+a Home alt+v" '^Ryhm.*laskutus$' "Escape"
    # The late invoices 1001, 1003 and 1004 of one customer, each counted
    # with the panel's Laske button; the panel stays open.
    shot interest-panel "ctrl+k ctrl+Prior $laske Next Next $laske Next $laske" 'Veklari$' ""
}
# Where the interest panel's Laske button is in the main window of 1180x820
# (below); it has no key of its own.
laske=click:822,532
# The first page of the invoice on screen as the built-in layout prints it.
pages() {
    page invoice-page1 1006
}

# The tools of this script, installed as scripts/install-deps.sh installs the build's.
"$root/scripts/install-deps.sh"
tools=(xdotool x11-apps imagemagick poppler-utils)
missing=()
for package in "${tools[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    [[ $status == "install ok installed" ]] || missing+=("$package")
done
if ((${#missing[@]} > 0)); then
    as_root=()
    [[ $(id -u) -eq 0 ]] || as_root=(sudo)
    "${as_root[@]}" apt-get update
    DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y --no-install-recommends \
        "${missing[@]}"
fi

if [[ ! -f $build/CMakeCache.txt ]]; then
    cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DVEKLARI_BUILD_TESTS=OFF -DVEKLARI_BUILD_BENCHMARKS=OFF >/dev/null
fi
cmake --build "$build" -j"$(nproc)" --target veklari veklari-cli veklari-samplecompany

# A fixed place, since the dialogs show the home directory.
work=${TMPDIR:-/tmp}/veklari-screenshots
rm -rf "$work"
mkdir -p "$work"
xvfb_pid=
program_pid=
cleanup() {
    [[ -n $program_pid ]] && kill "$program_pid" 2>/dev/null
    [[ -n $xvfb_pid ]] && kill "$xvfb_pid" 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT

config=$work/Veklari.ini
QT_LOGGING_RULES='veklari.*.debug=false' "$build/tools/veklari-samplecompany" "$config"
mkdir -p "$out" "$work/kuusela"
export HOME=$work/kuusela XDG_CONFIG_HOME=$work/kuusela/.config LANG=fi_FI.UTF-8
export QT_LOGGING_RULES='veklari.*.debug=false'

Xvfb "$display" -screen 0 1280x1024x24 -nolisten tcp >"$work/xvfb.log" 2>&1 &
xvfb_pid=$!
export DISPLAY=$display
sleep 1

# The id of the visible window whose title matches, once it is there.
wait_window() {
    local id
    for _ in $(seq 1 60); do
        id=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -1 || true)
        if [[ -n $id ]]; then
            echo "$id"
            return 0
        fi
        sleep 0.5
    done
    echo "No window '$1' appeared" >&2
    return 1
}

# Focuses the window, then types the keys into whatever has the focus: a
# dialog that a key opens takes the keys after it.
press() {
    local key
    [[ -n $2 ]] || return 0
    xdotool windowfocus --sync "$1"
    for key in $2; do
        # Time for a window that the last key opened to take the focus.
        sleep 1
        if [[ $key == click:* ]]; then
            key=${key#click:}
            xdotool mousemove --window "$1" "${key%,*}" "${key#*,}" click 1
        else
            xdotool key --clearmodifiers "$key"
        fi
    done
}

shot() {
    local name=$1 keys=$2 title=$3 close=$4
    press "$main" "$keys"
    local window
    window=$(wait_window "$title")
    # Let the window lay itself out and paint.
    sleep 1.5
    xwd -silent -id "$window" | convert xwd:- "$out/$name.png"
    echo "$out/$name.png"
    [[ -z $close ]] || press "$window" "$close"
    sleep 0.5
}

page() {
    local name=$1 number=$2
    "$build/src/veklari-cli" -c "$config" export pdf --dir "$work" --template "page-$name.pdf" \
        "$number" >/dev/null
    pdftoppm -r 80 -f 1 -l 1 -singlefile -png "$work/page-$name.pdf" "$out/$name"
    echo "$out/$name.png"
}

"$build/src/veklari" -c "$config" >"$work/veklari.log" 2>&1 &
program_pid=$!
main=$(wait_window 'Veklari$') || { cat "$work/veklari.log" >&2; exit 1; }
xdotool windowsize --sync "$main" 1180 820 windowmove "$main" 0 0
sleep 1
shots
pages
