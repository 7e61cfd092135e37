#!/usr/bin/env python3
"""Runs the checks of a folder, one line each, and adds what it counted to a file of results.

run.py [--suite FOLDER] [RESULTS [NAME...]]

FOLDER: this one by default. NAME: only checks whose name contains one of them.
"""

import sys
import time
import unittest
from pathlib import Path

FOLDER = Path(__file__).parent


class OneLineEach(unittest.TestResult):
    def __init__(self):
        super().__init__()
        self.passed = 0
        self.failed = 0
        self.skips = 0
        self.started = 0.0
        self.bad = False

    def startTest(self, test):
        super().startTest(test)
        self.started = time.monotonic()
        self.bad = False

    def stopTest(self, test):
        super().stopTest(test)
        if self.bad:
            self.failed += 1

    def line(self, outcome, test, detail=""):
        name = test.shortDescription() or test.id()
        print(f"  {outcome:<8}{name}  ({time.monotonic() - self.started:.1f} s){detail}", flush=True)

    def addSuccess(self, test):
        self.passed += 1
        self.line("passed", test)

    def addFailure(self, test, err):
        self.bad = True
        # The message alone: where it was raised is the check's own business.
        self.line("FAILED", test, "\n" + "\n".join("    " + line for line in str(err[1]).splitlines()))

    def addError(self, test, err):
        self.bad = True
        self.line("FAILED", test, "\n" + self._exc_info_to_string(err, test))

    def addSubTest(self, test, subtest, err):
        if err is not None:
            (self.addFailure if issubclass(err[0], test.failureException) else self.addError)(subtest, err)

    def addSkip(self, test, reason):
        self.skips += 1
        self.line("skipped", test, f" {reason}")


def chosen(suite, names):
    for item in suite:
        if isinstance(item, unittest.TestSuite):
            yield from chosen(item, names)
        elif not names or any(name in item.id() for name in names):
            yield item


def main():
    arguments = sys.argv[1:]
    folder = FOLDER
    if arguments[:1] == ["--suite"]:
        folder, arguments = Path(arguments[1]).resolve(), arguments[2:]
    results, names = arguments[:1], arguments[1:]
    suite = unittest.defaultTestLoader.discover(str(folder), pattern="check_*.py")
    outcome = OneLineEach()
    unittest.TestSuite(chosen(suite, names)).run(outcome)
    if outcome.passed + outcome.failed + outcome.skips == 0:
        print("  no check was run")
        outcome.failed = 1
    if results:
        with open(results[0], "a", encoding="utf-8") as file:
            file.write(f"{outcome.passed} {outcome.failed} {outcome.skips} {folder.name}\n")
    return 0 if outcome.failed == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
