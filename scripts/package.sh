#!/usr/bin/env bash
# Builds Brivanta and makes the Debian package build/package/brivanta_<version>_amd64.deb.
# Checks the desktop file and the AppStream metainfo on the way. Install with:
#   sudo apt install ./build/package/brivanta_*.deb
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
build=build/package
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=/usr \
    -DBUILD_TESTING=OFF -DBRIVANTA_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$(nproc)"

stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
DESTDIR="$stage" cmake --install "$build" --prefix /usr >/dev/null
desktop-file-validate "$stage"/usr/share/applications/*.desktop
appstreamcli validate --no-net "$stage"/usr/share/metainfo/*.metainfo.xml >/dev/null

rm -f "$build"/brivanta_*.deb
(cd "$build" && cpack -G DEB >/dev/null)
deb=$(ls "$build"/brivanta_*.deb)
echo "$deb"
