#!/usr/bin/env bash
# Installs the Debian 12 packages that building, testing and running Brivanta need.
# Idempotent; prints nothing when everything is already there. Needs root (or sudo) only to install.
set -euo pipefail

packages=(
    # build
    cmake ninja-build g++ clang clang-format libclang-rt-14-dev pkg-config dpkg-dev file
    qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools qt6-svg-dev qt6-5compat-dev
    qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools libgl-dev
    nlohmann-json3-dev libgtest-dev libgmock-dev libbenchmark-dev
    libcurl4-openssl-dev libsystemd-dev
    # run: QML modules, platform plugins, SVG icons, fonts
    qt6-qpa-plugins qt6-image-formats-plugins libqt6svg6
    qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript qml6-module-qtquick
    qml6-module-qtquick-controls qml6-module-qtquick-layouts qml6-module-qtquick-templates
    qml6-module-qtquick-window qml6-module-qt5compat-graphicaleffects qml6-module-qttest
    fonts-noto-color-emoji fonts-dejavu-core fonts-inter
    # tests, benchmarks, screenshots, packaging checks
    xvfb xauth xdotool curl desktop-file-utils appstream
    # the forwarder's tests: a local DNS-over-HTTPS server, certificates, namespaces
    unbound openssl iproute2 util-linux dbus-daemon
    x11-apps python3
)

missing=()
for p in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null || true)
    [ "$status" = "installed" ] || missing+=("$p")
done
# systemd-resolved for the namespace test: downloaded and unpacked, never installed (its postinst would
# take over /etc/resolv.conf, and without systemd as PID 1 nothing would answer on 127.0.0.53).
fetch_resolved() {
    local cache=/var/cache/brivanta-tests p
    [ -x "$cache/systemd-resolved/lib/systemd/systemd-resolved" ] && return 0
    [ "$(id -u)" -eq 0 ] || return 0
    mkdir -p "$cache/debs"
    for p in systemd-resolved libsystemd-shared; do
        (cd "$cache/debs" && { apt-get download -qq "$p" 2>/dev/null || { apt-get update -qq && apt-get download -qq "$p"; }; }) ||
            { echo "Could not download $p: the systemd-resolved namespace test will be skipped." >&2; return 0; }
        dpkg-deb -x "$(ls "$cache/debs/${p}"_*.deb | tail -n 1)" "$cache/systemd-resolved"
    done
}
trap fetch_resolved EXIT

[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing ${#missing[@]} missing Debian package(s): ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "Missing packages and not root: install them as root first." >&2; exit 1; }
    sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
# Packaged services (unbound's) must not start on a build machine: a temporary policy-rc.d forbids it.
policy=""
if [ ! -e /usr/sbin/policy-rc.d ]; then
    policy=/usr/sbin/policy-rc.d
    printf '#!/bin/sh\nexit 101\n' | $sudo tee "$policy" >/dev/null && $sudo chmod 755 "$policy"
    trap '$sudo rm -f "$policy"; fetch_resolved' EXIT
fi
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
