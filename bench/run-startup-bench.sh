#!/usr/bin/env bash
# Start-up and memory of the application against a bare Qt Quick window, under Xvfb.
# Writes bench/results/startup.txt. BUILD_DIR picks another build tree (default: build/default).
# Extra arguments go to the driver, e.g. --runs 9.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${BUILD_DIR:-build/default}
if [ -z "${BUILD_DIR:-}" ]; then
    bash scripts/install-deps.sh
    cmake --preset default >/dev/null
fi
cmake --build "$build" -j "$(nproc)" --target brivanta brivanta_bare_window brivanta_first_frame_probe

mkdir -p bench/results
{
    echo "# bench/run-startup-bench.sh, $(date -u +%Y-%m-%dT%H:%MZ), $(nproc) CPU(s), Qt $(qtpaths6 --qt-version 2>/dev/null || echo '?'), Xvfb 1280x1024x24 -noreset"
    xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" python3 bench/startup/startup_bench.py \
        --app "$build/ui/brivanta" \
        --bare "$build/bench/startup/brivanta_bare_window" \
        --probe "$build/bench/startup/libbrivanta_first_frame_probe.so" "$@"
} | tee bench/results/startup.txt.new
mv bench/results/startup.txt.new bench/results/startup.txt
