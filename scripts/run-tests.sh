#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: the normal build with the style check, then the
# AddressSanitizer + UndefinedBehaviorSanitizer build. Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
jobs=$(nproc)

for preset in default asan; do
    echo "== $preset: configure and build"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset" -j "$jobs"
    if [ "$preset" = default ]; then
        echo "== style: clang-format and qmllint"
        bash scripts/check-style.sh build/default
    fi
    echo "== $preset: test"
    ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
        ctest --preset "$preset" -j "$jobs"
done
echo "All tests passed."
