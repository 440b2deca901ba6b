#!/usr/bin/env bash
# Builds the Debian package from a build tree into a temporary directory and
# checks it as a distribution would: its file list, the menu entry, the
# AppStream data and lintian. Installs nothing.
#   packagecontents.sh BUILD_DIR
set -uo pipefail

build_dir=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
    echo "FAIL: $*" >&2
    failures=$((failures + 1))
}

if ! (cd "$build_dir" && cpack -G DEB -B "$work" >"$work/cpack.log" 2>&1); then
    cat "$work/cpack.log" >&2
    echo "FAIL: cpack" >&2
    exit 1
fi
deb=$(ls "$work"/*.deb)
contents=$(dpkg-deb --contents "$deb" | awk '{ print $NF }')

app=fi.veklari.Veklari
expected=(
    ./usr/bin/veklari
    ./usr/bin/veklari-cli
    ./usr/share/applications/$app.desktop
    ./usr/share/metainfo/$app.metainfo.xml
    ./usr/share/icons/hicolor/scalable/apps/veklari.svg
    ./usr/share/doc/veklari/copyright
)
sizes=(16 24 32 48 64 128 256)
for size in "${sizes[@]}"; do
    expected+=("./usr/share/icons/hicolor/${size}x${size}/apps/veklari.png")
done
for path in "${expected[@]}"; do
    grep -qxF "$path" <<<"$contents" || fail "$path is not in the package"
done

root=$work/root
dpkg-deb -x "$deb" "$root"
# An icon in the wrong size folder is scaled blurry or not used at all.
for size in "${sizes[@]}"; do
    icon=$root/usr/share/icons/hicolor/${size}x${size}/apps/veklari.png
    [[ -f $icon ]] || continue
    read -r -a header < <(od -An -tu1 -j16 -N8 "$icon")
    width=$(((header[2] << 8) | header[3]))
    height=$(((header[6] << 8) | header[7]))
    [[ $width == "$size" && $height == "$size" ]] || fail "$icon is ${width}x${height}"
done

desktop=$root/usr/share/applications/$app.desktop
desktop-file-validate "$desktop" || fail "desktop-file-validate"
for line in 'Exec=veklari' 'Icon=veklari' 'Categories=Office;Finance;' 'GenericName=Invoicing' \
    'GenericName[fi]=Laskutus'; do
    grep -qxF "$line" "$desktop" || fail "$line missing from the desktop file"
done
appstreamcli validate --no-net "$root/usr/share/metainfo/$app.metainfo.xml" ||
    fail "appstreamcli validate"
# Warnings (no manual pages) are allowed, errors are not.
lintian --fail-on error "$deb" || fail "lintian"

if ((failures > 0)); then
    echo "$failures package checks failed" >&2
    exit 1
fi
echo "The package $(basename "$deb") passed its checks"
