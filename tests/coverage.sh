#!/usr/bin/env bash
# Runs the tests of a build with counters and reports the library's lines and branches: tests/coverage.sh BUILD_FOLDER.
# A branch that is only an exception's way out of an expression does not count. What threw in a test has its lines
# counted. The tests that install and build anew count nothing and are left out, and the symbols are those of the counters, too;
# so are the Windows bodies.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
readonly build=${1:?build folder}
find "$build" -name '*.gcda' -delete
mkdir -p "$build/results" "$build/report"
failed=0
ctest --preset coverage -E "^(install|exported_symbols)" >"$build/results/tests.log" 2>&1 || failed=1
[ "$failed" -eq 0 ] || { echo "Tests failed; what follows counts what ran:" && sed -n '/The following tests FAILED/,$p' "$build/results/tests.log"; }
gcovr --root . --filter 'zelto/' --exclude-throw-branches --exclude-unreachable-branches -j "$(nproc)" \
  --html-details "$build/report/index.html" --html-title "Zelto" --json-summary "$build/report/summary.json" \
  --txt "$build/report/summary.txt" --print-summary "$build" >"$build/report/totals.txt"
# Rooms, then the files with the most bare lines.
python3 - "$build/report/summary.json" <<'PYTHON'
import collections
import json
import sys

files = json.load(open(sys.argv[1]))["files"]
rooms = collections.defaultdict(lambda: [0, 0, 0, 0])
for file in files:
    totals = rooms[file["filename"].split("/")[1] if file["filename"].count("/") > 1 else "zelto"]
    for i, key in enumerate(("line_covered", "line_total", "branch_covered", "branch_total")):
        totals[i] += file[key]


def show(name, lines, all_lines, branches, all_branches):
    part = lambda a, b: f"{100 * a / b:5.1f} %" if b else "      -"
    print(f"{name:48} {part(lines, all_lines)} of {all_lines:5} lines {part(branches, all_branches)} of {all_branches:5} branches")


for room in sorted(rooms):
    show(room, *rooms[room])
show("all", *(sum(room[i] for room in rooms.values()) for i in range(4)))
print("\nMost bare lines:")
for file in sorted(files, key=lambda file: file["line_covered"] - file["line_total"])[:12]:
    show(file["filename"], *(file[key] for key in ("line_covered", "line_total", "branch_covered", "branch_total")))
PYTHON
echo "$build/report/index.html"
[ "$failed" -eq 0 ]
