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

# qmllint, through its JSON report: every warning fails, except one that Debian's packaging causes (the
# graphical effects module ships without the type description of its private part).
rm -f "$build"/*_qmllint.json
cmake --build "$build" --target all_qmllint_json >/dev/null 2>&1 || true
python3 - "$build"/*_qmllint.json <<'PY'
import json, sys
known = ("QML types file does not exist: /usr/lib/x86_64-linux-gnu/qt6/qml/Qt5Compat/GraphicalEffects/private/",
         'Warnings occurred while importing module "Qt5Compat.GraphicalEffects":')
findings = []
for report in sys.argv[1:]:
    with open(report) as f:
        for entry in json.load(f)["files"]:
            if not entry.get("success", True) and not entry.get("warnings"):
                findings.append(f"{entry['filename']}: qmllint failed")
            for w in entry.get("warnings", []):
                if not w["message"].startswith(known):
                    where = f"{entry['filename']}:{w.get('line', '?')}:{w.get('column', '?')}"
                    findings.append(f"{w['type']}: {where}: {w['message']}")
if findings:
    print("qmllint is not clean:", *findings, sep="\n  ", file=sys.stderr)
    sys.exit(1)
PY
echo "Style: clang-format and qmllint clean."
