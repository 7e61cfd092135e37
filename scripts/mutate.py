#!/usr/bin/env python3
"""Changes one token of the library at a time and tells which changes no native test notices.

    scripts/mutate.py [--count 200] [--seed 1] [--jobs 2]       # a random sample; the same seed gives the same one
    scripts/mutate.py --only 'input/click'                      # changes of files whose path contains this
    scripts/mutate.py --where src/input/send_input.cpp:40       # every change of one line

A long form for a night or a release. Each job works on its own copy of the tree in build/mutate, builds what a change
touches and runs the native tests up to the first failure. A change that does not compile is replaced by another one.
What no test can notice is listed with its reason in tests/mutations.txt and left out of the figure. Closes with the
figure; build/mutate/survivors.txt names every change that stayed unnoticed.
"""

import argparse
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import threading
from pathlib import Path
from typing import NamedTuple

TOP = Path(__file__).resolve().parent.parent
FOLDER = TOP / "build" / "mutate"
KNOWN = TOP / "tests" / "mutations.txt"
# Declarations of the platform, and what only Windows compiles.
LEFT_OUT = re.compile(r"(native|uia|platform)\.h$|windows")
SECONDS_FOR_TESTS = 120

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.)*(?:\\\n[^\n]*)*)
      | (?P<text>(?:u8|u|U|L)?"(?:[^"\\\n]|\\.)*")
      | (?P<character>(?:u8|u|U|L)?'(?:[^'\\\n]|\\.)+')
      | (?P<number>\b(?:0[xX][0-9a-fA-F']+|[0-9][0-9']*)(?:[uUlL]*)\b(?!\.))
      | (?P<word>[A-Za-z_]\w*)
      | (?P<operator><<=|>>=|<=>|->\*|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|[-+*/%<>=!&|^~?:;,.(){}\[\]])
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

OPERATORS = {
    "==": ["!="], "!=": ["=="], "<": ["<="], "<=": ["<"], ">": [">="], ">=": [">"],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "/": ["*"], "%": ["/"],
    "++": ["--"], "--": ["++"], "+=": ["-="], "-=": ["+="], "|": ["&"], "<<": [">>"], ">>": ["<<"], "!": [""],
}  # fmt: skip
WORDS = {
    "true": ["false"], "false": ["true"], "TRUE": ["FALSE"], "FALSE": ["TRUE"],
    "KORVANE_OK": ["KORVANE_FAILED"], "KORVANE_NOT_FOUND": ["KORVANE_FAILED"],
    "KORVANE_FAILED": ["KORVANE_NOT_FOUND"], "KORVANE_INVALID_ARGUMENT": ["KORVANE_FAILED"],
    "KORVANE_CANCELLED": ["KORVANE_FAILED"], "break": ["continue"], "continue": ["break"],
}  # fmt: skip
# A constant of the platform as an argument or a part of flags.
CONSTANT = re.compile(r"(?:[A-Z]{2,}[A-Z0-9]*_[A-Z0-9_]+|UIA_\w+Id)$")
CALL = re.compile(r"^[ \t]+(?:[A-Za-z_][\w:]*(?:\.|->))*[A-Za-z_][\w:]*\([^\n{}]*\);$", re.MULTILINE)


class Change(NamedTuple):
    path: str
    offset: int
    before: str
    after: str
    line: int
    text: str

    def __str__(self):
        return f"{self.path}:{self.line}: {self.before!r} -> {self.after!r}   {self.text}"


def replacements(kind, token, before, after):
    """What a token becomes; `before` and `after` are the source around it."""
    if kind == "operator":
        unary = not re.search(r"[\w)\]]\s*$", before) or before.rstrip().endswith("return")
        # Brackets of templates stand close to what they enclose.
        template = token in "<>" and not (before[-1:] == " " and after[:1] == " ")
        if template or token == "+" and unary:
            return []
        if token == "-" and unary:
            return [""]
        return OPERATORS.get(token, [])
    if kind == "number":
        digits = token.rstrip("uUlL").replace("'", "")
        value = int(digits, 16 if digits[:2] in ("0x", "0X") else 10)
        return [str(value + 1), str(value - 1)] if value else ["1"]
    if kind == "text":
        return ['"x' + token[1:]] if token[0] == '"' else []
    if kind == "character":
        return ["'#'"] if token[0] == "'" else ["u'#'"] if token[0] == "u" else []
    if kind == "word":
        return WORDS.get(token) or (["0"] if CONSTANT.match(token) and not before.rstrip().endswith("case") else [])
    return []


def changes_of(path):
    source = (TOP / path).read_text(encoding="utf-8")
    found = []

    def add(offset, before, after):
        line = source.count("\n", 0, offset) + 1
        text = source[source.rfind("\n", 0, offset) + 1 : source.find("\n", offset)].strip()
        found.append(Change(path, offset, before, after, line, text))

    for match in TOKEN.finditer(source):
        start, end = match.span()
        line = source[source.rfind("\n", 0, start) + 1 : start]
        if "static_assert" in line:
            continue
        for after in replacements(match.lastgroup, match[0], source[max(0, start - 80) : start], source[end : end + 20]):
            add(start, match[0], after)
    for match in CALL.finditer(source):
        if not match[0].lstrip().startswith("return"):
            add(match.start(), match[0], "")
    return found


def all_changes(only):
    listed = subprocess.run(["git", "ls-files", "src", "platform"], cwd=TOP, capture_output=True, text=True, check=True).stdout
    paths = [p for p in listed.split() if p.endswith((".cpp", ".h")) and not LEFT_OUT.search(p) and only in p]
    return [change for path in paths for change in changes_of(path)]


def known_reasons():
    """From (file, line's text, before, after) to the reason why no test can notice the change."""
    reasons = {}
    if KNOWN.exists():
        for line in KNOWN.read_text(encoding="utf-8").splitlines():
            if line and not line.startswith("#"):
                *change, reason = line.rsplit(" | ", 4)
                reasons[tuple(change)] = reason
    return reasons


def key(change):
    # A call that was taken out is its whole line.
    taken_out = change.before.strip() == change.text
    return Path(change.path).name, change.text, "call" if taken_out else change.before, change.after or "nothing"


class Tree:
    """A copy of the tree with its own build."""

    def __init__(self, number):
        self.source = FOLDER / str(number) / "source"
        self.build = FOLDER / str(number) / "build"

    def prepare(self):
        listed = subprocess.run(["git", "ls-files"], cwd=TOP, capture_output=True, text=True, check=True).stdout
        wanted = {p for p in listed.splitlines() if (TOP / p).is_file()}
        for path in wanted:
            target = self.source / path
            target.parent.mkdir(parents=True, exist_ok=True)
            # What is unchanged keeps its time, so that it is not built again.
            if not target.exists() or target.read_bytes() != (TOP / path).read_bytes():
                shutil.copyfile(TOP / path, target)
        for old in self.source.rglob("*"):
            if old.is_file() and str(old.relative_to(self.source)) not in wanted:
                old.unlink()
        run(["cmake", "-S", self.source, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
             "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g0 -Wno-error"])  # fmt: skip
        if not self.builds() or not self.passes():
            sys.exit(f"mutate: the unchanged tree does not build, or its tests fail; see {FOLDER}/*/build")

    def builds(self):
        return run(["cmake", "--build", self.build, "--target", "native_tests"]) == 0

    def passes(self):
        return run([self.build / "bin" / "native_tests", "--gtest_fail_fast", "--gtest_brief=1"]) == 0

    def outcome(self, change):
        path = self.source / change.path
        original = path.read_bytes()
        source = original.decode("utf-8")
        end = change.offset + len(change.before)
        path.write_text(source[: change.offset] + change.after + source[end:], encoding="utf-8")
        try:
            if not self.builds():
                return "does not compile"
            return "unnoticed" if self.passes() else "noticed"
        finally:
            path.write_bytes(original)


def run(command):
    """The exit code; a program that hangs is ended with what it started."""
    process = subprocess.Popen(
        command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True, cwd=FOLDER
    )
    try:
        return process.wait(SECONDS_FOR_TESTS if "native_tests" in str(command[0]) else 900)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return -1


class Campaign:
    def __init__(self, changes, wanted):
        self.changes = iter(changes)
        self.wanted = wanted
        self.tried = 0
        self.unnoticed = []
        self.lock = threading.Lock()

    def next_change(self):
        with self.lock:
            return next(self.changes, None) if self.tried < self.wanted else None

    def work(self, tree):
        tree.prepare()
        while change := self.next_change():
            outcome = tree.outcome(change)
            if outcome == "does not compile":
                continue
            with self.lock:
                self.tried += 1
                if outcome == "unnoticed":
                    self.unnoticed.append(change)
                print(f"{self.tried:4} {outcome:<9} {change}", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--only", default="")
    parser.add_argument("--where", metavar="FILE:LINE")
    options = parser.parse_args()
    FOLDER.mkdir(parents=True, exist_ok=True)

    reasons = known_reasons()
    changes = all_changes(options.only)
    if options.where:
        changes = [c for c in changes if f"{c.path}:{c.line}" == options.where]
    random.Random(options.seed).shuffle(changes)
    excused = [c for c in changes if key(c) in reasons]
    changes = [c for c in changes if key(c) not in reasons]
    print(f"{len(changes)} changes are possible, {len(excused)} more are known to have no effect", flush=True)

    campaign = Campaign(changes, min(options.count, len(changes)))
    threads = [threading.Thread(target=campaign.work, args=(Tree(n),)) for n in range(options.jobs)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    (FOLDER / "survivors.txt").write_text("".join(f"{' | '.join(key(c))} | ?\n" for c in campaign.unnoticed))
    noticed = campaign.tried - len(campaign.unnoticed)
    for change in campaign.unnoticed:
        print(f"unnoticed: {change}")
    share = 100 * noticed / campaign.tried if campaign.tried else 0
    print(f"{noticed} of {campaign.tried} changes were noticed: {share:.1f} % (seed {options.seed})")
    return 0


if __name__ == "__main__":
    sys.exit(main())
