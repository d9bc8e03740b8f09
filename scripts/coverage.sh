#!/usr/bin/env bash
# Line coverage of the whole test suite, per folder, from the `coverage` preset (GCC --coverage).
# Tests, fuzzers, benchmarks and generated files are left out. Extra arguments go to ctest (e.g. -R dns).
# The namespace tests need root and unshare; without them they skip and their code counts as not covered.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset coverage >/dev/null
cmake --build --preset coverage -j "${JOBS:-2}"
# Objects of sources that left the build, and their notes, would count their inlined lines as not run.
ninja -C build/coverage -t cleandead >/dev/null
find build/coverage -name '*.gcno' | while read -r notes; do [ -e "${notes%.gcno}.o" ] || rm -f "$notes"; done
find build/coverage -name '*.gcda' -delete
status=0
ctest --preset coverage -j "${JOBS:-2}" "$@" >build/coverage/ctest.log 2>&1 || status=$?
tail -n 3 build/coverage/ctest.log

# CMake's compiler probe leaves a .gcno behind; it is no part of the project.
gcovr --root . --object-directory build/coverage --exclude-directories 'build/coverage/CMakeFiles/[0-9.]+$' \
    --exclude '^tests/' --exclude '^fuzz/' --exclude '^bench/' --exclude '^build/' \
    --json-summary build/coverage/summary.json >/dev/null
python3 - build/coverage/summary.json <<'PY'
import collections, json, os, sys
folders = collections.defaultdict(lambda: [0, 0])
for f in json.load(open(sys.argv[1]))["files"]:
    for key in (os.path.dirname(f["filename"]) or ".", "total"):
        folders[key][0] += f["line_covered"]
        folders[key][1] += f["line_total"]
for name, (covered, total) in sorted(folders.items(), key=lambda kv: (kv[0] == "total", kv[0])):
    print(f"{name:32} {covered:6}/{total:<6} {100.0 * covered / max(total, 1):5.1f} %")
PY
exit $status
