#!/usr/bin/env bash
# Blocking test run time against ten loopback hosts (next to curl --parallel), and against hosts that
# never finish. Writes bench/results/blocking.txt. BUILD_DIR picks another build tree (default:
# build/default, configured with the "default" preset).
set -euo pipefail
cd "$(dirname "$0")/.."

build=${BUILD_DIR:-build/default}
if [ -z "${BUILD_DIR:-}" ]; then
    cmake --preset default >/dev/null
fi
cmake --build "$build" -j "$(nproc)" --target brivanta_blocking_bench

mkdir -p bench/results
{
    echo "# bench/run-blocking-bench.sh, $(date -u +%Y-%m-%dT%H:%MZ), $(nproc) CPU(s), Qt $(qtpaths6 --qt-version 2>/dev/null || echo '?'), $(curl --version | head -n 1 | cut -d' ' -f1-2)"
    "$build/bench/blocking/brivanta_blocking_bench"
} | tee bench/results/blocking.txt.new
mv bench/results/blocking.txt.new bench/results/blocking.txt
