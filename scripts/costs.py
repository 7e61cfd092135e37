#!/usr/bin/env python3
"""Counts the instructions that the library executes for a few things that hosts do often, and compares them with the
committed figures: more than 3 % above them fails.

    scripts/costs.py [--results FILE]      # compares; the native build has to be there
    scripts/costs.py --renew               # writes the figures of this compiler anew, after a change that is wanted

Counted by Valgrind, the same wherever one compiler builds it: the library's own instructions, and those of the C++ runtime on its
behalf, without what the scripted desktop executes to answer its calls, and without the C library's string functions,
which differ between processors. The figures hold for one compiler, so tests/costs/figures.json keeps them for each; with
a compiler that has none, nothing is compared, and that is said.
"""

import argparse
import json
import re
import subprocess
import sys
from collections import defaultdict
from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
BUILD = TOP / "build/native"
PROGRAM = BUILD / "bin/costs"
FIGURES = TOP / "tests/costs/figures.json"
ROOM = 0.03
STRING_FUNCTION = re.compile(r"_*(mem|str|wmem|wcs)")


def compiler():
    """As the figures name it: "g++ 12"."""
    cache = (BUILD / "CMakeCache.txt").read_text(encoding="utf-8")
    path = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache, re.M)[1]
    kind = "clang++" if "clang" in Path(path).name else "g++"
    version = subprocess.run([path, "-dumpversion"], capture_output=True, text=True, check=True).stdout
    return f"{kind} {version.split('.')[0].strip()}"


def own_instructions(profile):
    """Of a profile in which each function stands with all its callers: innermost first, an apostrophe between them."""
    files, costs = {}, defaultdict(int)
    name, after_call = "", False
    file = ""
    for line in profile.splitlines():
        if line.startswith("fl="):
            file = line[3:]
        elif line.startswith("fn="):
            name = line[3:]
            files[name.split("'")[0]] = file
        elif line.startswith("calls="):
            after_call = True
        elif line and (line[0].isdigit() or line[0] in "+-*"):
            if not after_call:
                costs[name] += int(line.split()[1])
            after_call = False
    total = 0
    for function, cost in costs.items():
        chain = function.split("'")
        chain = chain[: chain.index("Measured")] if "Measured" in chain else chain[:1]
        within_desktop = any("/standin/" in files.get(link, "") for link in chain)
        if not within_desktop and not any(STRING_FUNCTION.match(link) for link in chain[:1]):
            total += cost
    return total


def count(what):
    profile = BUILD / "costs.profile"
    run = subprocess.run(
        ["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}", "--toggle-collect=Measured",
         "--separate-callers=60", "--compress-strings=no", "--compress-pos=no", "--demangle=no", PROGRAM, what],
        capture_output=True, text=True, check=False,
    )  # fmt: skip
    if run.returncode != 0:
        sys.exit(f"costs: {what}: did not end well:\n{run.stderr}")
    return own_instructions(profile.read_text(encoding="utf-8"))


def compare(measured, figures):
    failed = 0
    for what, instructions in measured.items():
        figure = figures.get(what)
        if figure is None:
            failed += 1
            print(f"  FAILED  {what}: {instructions:,} instructions, and no figure: scripts/costs.py --renew")
        elif instructions > figure * (1 + ROOM):
            failed += 1
            print(f"  FAILED  {what}: {instructions:,} instructions, {instructions / figure - 1:+.1%} against {figure:,}")
        else:
            hint = "; scripts/costs.py --renew keeps that" if instructions < figure * (1 - ROOM) else ""
            print(f"  passed  {what}: {instructions:,} instructions ({instructions / figure - 1:+.1%}{hint})")
    return failed


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--renew", action="store_true")
    parser.add_argument("--results", type=Path)
    options = parser.parse_args()
    if not PROGRAM.exists():
        sys.exit("costs: not built: cmake --preset native && cmake --build --preset native --target costs")

    names = subprocess.run([PROGRAM], capture_output=True, text=True, check=True).stdout.splitlines()
    all_figures = json.loads(FIGURES.read_text(encoding="utf-8")) if FIGURES.exists() else {}
    name = compiler()
    counted = {"passed": 0, "failed": 0, "skipped": 0}
    if options.renew:
        all_figures[name] = {what: count(what) for what in names}
        FIGURES.write_text(json.dumps(all_figures, indent=2, sort_keys=True) + "\n", encoding="utf-8")
        print(json.dumps({name: all_figures[name]}, indent=2))
    elif name not in all_figures:
        counted["skipped"] = 1
        print(f"  skipped costs: there are figures for {', '.join(sorted(all_figures))}, none for {name}: "
              "scripts/costs.py --renew adds them")  # fmt: skip
    else:
        counted["failed"] = compare({what: count(what) for what in names}, all_figures[name])
        counted["passed"] = len(names) - counted["failed"]
    if options.results:
        with options.results.open("a", encoding="utf-8") as file:
            file.write(f"{counted['passed']} {counted['failed']} {counted['skipped']} costs\n")
    return 1 if counted["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
