#!/usr/bin/env python3
"""Sums up an export of llvm-cov: coverage_report.py EXPORT LEAST_LINES LEAST_BRANCHES

Templates are counted by their source, so that one instantiation is enough. Fails when less is covered than wanted.
"""

import json
import sys
from collections import defaultdict
from pathlib import Path


def read_lines(file):
    """For each line with code, whether it was executed."""
    executed = {}
    segments = file["segments"]
    for here, there in zip(segments, segments[1:]):
        line, _, count, has_count, is_entry, is_gap = here
        if not has_count or is_gap:
            continue
        first = line if is_entry else line + 1
        for number in range(first, max(there[0], line) + (0 if there[0] > line else 1)):
            executed[number] = max(executed.get(number, 0), count)
    return executed


def source(name):
    """A file name as the compiler's prefix map left it, from the root of the repository."""
    return name.split("/./")[-1]


def main(export, least_lines, least_branches):
    data = json.loads(Path(export).read_text())["data"][0]
    branches = defaultdict(lambda: [0, 0])
    for function in data["functions"]:
        for branch in function.get("branches", []):
            key = (source(function["filenames"][branch[6]]), branch[0], branch[1], branch[3])
            branches[key][0] += branch[4]
            branches[key][1] += branch[5]

    line_counts = [0, 0]
    branch_counts = [0, 0]
    for file in sorted(data["files"], key=lambda file: file["filename"]):
        path = source(file["filename"])
        if not path.startswith("src/"):
            continue
        text = Path(path).read_text().split("\n")
        left = []
        for number, count in sorted(read_lines(file).items()):
            line_counts[0] += count > 0
            line_counts[1] += 1
            if count == 0:
                left.append((number, "not executed"))
        for (name, number, _, _), (taken, not_taken) in sorted(branches.items()):
            if name != path:
                continue
            branch_counts[0] += (taken > 0) + (not_taken > 0)
            branch_counts[1] += 2
            if taken == 0 or not_taken == 0:
                left.append((number, "never " + ("either" if taken == not_taken else "true" if taken == 0 else "false")))
        for number, what in sorted(set(left)):
            print(f"  {path}:{number}: {what}: {text[number - 1].strip()[:90]}")

    lines = 100 * line_counts[0] / line_counts[1]
    taken = 100 * branch_counts[0] / branch_counts[1]
    print(f"lines    {line_counts[0]} of {line_counts[1]} ({lines:.1f} %, at least {least_lines} %)")
    print(f"branches {branch_counts[0]} of {branch_counts[1]} ({taken:.1f} %, at least {least_branches} %)")
    return 0 if lines >= least_lines and taken >= least_branches else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], float(sys.argv[2]), float(sys.argv[3])))
