#!/usr/bin/env bash
# Style gate for CI: every C++ file as .clang-format wants it, and the QML module clean under qmllint.
# Usage: scripts/check-style.sh [build-dir]   (the build dir must be configured; qmllint needs its qmltypes)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/default}

unformatted=()
while IFS= read -r file; do
    clang-format --style=file "$file" | cmp -s - "$file" || unformatted+=("$file")
done < <(git ls-files '*.cpp' '*.h')
if [ ${#unformatted[@]} -gt 0 ]; then
    echo "Not formatted as .clang-format asks (run clang-format -i on them):" >&2
    printf '  %s\n' "${unformatted[@]}" >&2
    exit 1
fi

# qmllint prints warnings but exits 0 on some of them; any output line naming a file is a finding.
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! cmake --build "$build" --target all_qmllint >"$log" 2>&1 || grep -qE '^(Warning|Error|Info):' "$log"; then
    cat "$log" >&2
    echo "qmllint is not clean." >&2
    exit 1
fi
echo "Style: clang-format and qmllint clean."
