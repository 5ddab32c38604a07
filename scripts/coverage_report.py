# SPDX-License-Identifier: Apache-2.0
"""Prints what gcovr has counted and compares it with the list of branches that are known not to be taken.

    coverage_report.py BRANCHES.json NOT-TAKEN.md

NOT-TAKEN.md has a heading for each file, "## src/x.cpp". Under it is an item for each line of the source with branches that
are not taken: "- `the line`", without its indentation, or "- 2 of `the line`" for more than one branch. The reason follows.
Lines are identified by their text and not by their number, which changes with every edit above them. Ends with 1 if the
counts and the list differ.
"""
import json
import re
import sys
from collections import Counter


def read_named(path):
    """Returns the branches that the list names, as a map from (file, text of the line) to their number."""
    named = Counter()
    file = None
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if heading := re.match(r"## (\S+)$", line):
                file = heading[1]
            elif entry := re.match(r"- (?:(\d+) of )?`(.+?)`(?:\s|$)", line):
                named[(file, entry[2])] += int(entry[1] or 1)
    return named


def main(counted_path, named_path):
    with open(counted_path, encoding="utf-8") as report:
        files = [file for file in json.load(report)["files"] if file["file"].startswith("src/")]
    print(f"{'file':<42} {'lines':>6} {'run':>6} {'branches':>9} {'taken':>6}")
    totals = Counter()
    not_taken = []
    for file in files:
        with open(file["file"], encoding="utf-8") as source:
            text = source.read().split("\n")
        lines = [line for line in file["lines"] if not line.get("gcovr/noncode")]
        counts = Counter(lines=len(lines), run=sum(line["count"] > 0 for line in lines))
        for line in lines:
            missing = sum(branch["count"] == 0 for branch in line["branches"])
            counts["branches"] += len(line["branches"])
            counts["taken"] += len(line["branches"]) - missing
            if missing:
                not_taken.append((file["file"], line["line_number"], text[line["line_number"] - 1].strip(), missing))
        print(f"{file['file']:<42} {counts['lines']:>6} {counts['run']:>6} {counts['branches']:>9} {counts['taken']:>6}")
        totals.update(counts)
    share = 100 * totals["taken"] / totals["branches"]
    print(f"{'all':<42} {totals['lines']:>6} {totals['run']:>6} {totals['branches']:>9} {totals['taken']:>6}  {share:.1f} %\n")

    named = read_named(named_path)
    found = Counter()
    for file, number, line, missing in not_taken:
        found[(file, line)] += missing
        mark = "" if found[(file, line)] <= named[(file, line)] else f"   <- not listed in {named_path}"
        print(f"{file}:{number}: {missing} not taken: {line}{mark}")
    stale = {key: count for key, count in named.items() if found[key] < count}
    for (file, line), count in stale.items():
        print(f"{file}: {found[(file, line)]} not taken, {count} listed in {named_path}: {line}")
    unnamed = sum((found - named).values())
    print(f"{sum(found.values())} branches not taken, {unnamed} of them not listed, {len(stale)} entries out of date")
    return 1 if unnamed or stale else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
