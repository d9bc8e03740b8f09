#!/usr/bin/env bash
# Installs what is missing, builds, and starts the Brivanta window.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake --preset default >/dev/null
cmake --build --preset default -j "$(nproc)" --target brivanta

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ "${QT_QPA_PLATFORM:-}" != "offscreen" ]; then
    echo "No display to show the window on: run it in a desktop session." >&2
    exit 1
fi
exec ./build/default/ui/brivanta "$@"
