#!/usr/bin/env bash
# Regenerates the README's screenshots in docs/screenshots/: phone (393x852) and tablet (1024x1366)
# sizes of the onboarding's first and last pages, the whole main screen (top to bottom) disabled and
# enabled, the test results, and the share sheet; plus two German ones. The app runs in a virtual X
# display (Xvfb, with Mesa's software OpenGL, so the blur and shadows are drawn) over scripted services:
# no DNS setting is touched and nothing goes out to the network.
set -euo pipefail
cd "$(dirname "$0")/.."

# BRIVANTA_BUILD_DIR: an already configured build directory to use instead of the default preset's.
build_dir=${BRIVANTA_BUILD_DIR:-build/default}
if [ -z "${BRIVANTA_BUILD_DIR:-}" ]; then
    cmake --preset default >/dev/null
fi
cmake --build "$build_dir" -j "$(nproc)" --target brivanta_screenshots

output=docs/screenshots
mkdir -p "$output"
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT

env -u SIMULATOR_DEVICE_NAME -u XCODE_RUNNING_FOR_PREVIEWS -u QT_QUICK_BACKEND \
    HOME="$home" XDG_CONFIG_HOME="$home/.config" XDG_RUNTIME_DIR="$home" \
    LANG=C.UTF-8 LC_ALL=C.UTF-8 LANGUAGE= QT_QPA_PLATFORM=xcb \
    xvfb-run -a -s "-screen 0 1400x4200x24" \
    "$build_dir/tests/ui/brivanta_screenshots" "$output"
