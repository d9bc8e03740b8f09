#!/usr/bin/env bash
# Start-up and memory of the application against a bare Qt Quick window on the same renderer, under Xvfb.
# Writes bench/results/startup.txt (OUT names another file). BUILD_DIR picks another build tree (default:
# build/default).
# Extra arguments go to the driver, e.g. --runs 9.
set -euo pipefail
cd "$(dirname "$0")/.."

build=${BUILD_DIR:-build/default}
if [ -z "${BUILD_DIR:-}" ]; then
    bash scripts/install-deps.sh
    cmake --preset default >/dev/null
fi
cmake --build "$build" -j "$(nproc)" --target brivanta brivanta_bare_window brivanta_first_frame_probe

out=${OUT:-bench/results/startup.txt}
mkdir -p "$(dirname "$out")"
{
    echo "# bench/run-startup-bench.sh, $(date -u +%Y-%m-%dT%H:%MZ), $(nproc) CPU(s), Qt $(qtpaths6 --qt-version 2>/dev/null || echo '?'), Xvfb 1280x1024x24 -noreset, load average $(cut -d' ' -f1-3 /proc/loadavg)"
    xvfb-run -a -s "-screen 0 1280x1024x24 -noreset" python3 bench/startup/startup_bench.py \
        --app "$build/ui/brivanta" \
        --bare "$build/bench/startup/brivanta_bare_window" \
        --probe "$build/bench/startup/libbrivanta_first_frame_probe.so" "$@"
    echo "# load average after: $(cut -d' ' -f1-3 /proc/loadavg)"
} | tee "$out.new"
mv "$out.new" "$out"
