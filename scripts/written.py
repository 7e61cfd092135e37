"""Files that a script writes from other files: written, or with --check compared with what would be written."""

import sys

from interface import ROOT


def write_or_check(script, files, problems=()):
    """`files`: text by the file's place in the repository. Returns the problems, those that were given first."""
    problems = list(problems)
    for name, text in files.items():
        file = ROOT / name
        if sys.argv[1:] != ["--check"]:
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")
        elif not file.exists() or file.read_text(encoding="utf-8") != text:
            problems.append(f"{name} is not up to date: scripts/{script} writes it")
    return problems
