#!/usr/bin/env python3
"""Runs one GoogleTest program, stops it when it hangs, and adds what it counted to a file of results.

run_gtest.py --name NAME --results FILE [--filter F] [--stall SECONDS] [--folder FOLDER] [--logs FOLDER]... -- PROGRAM...

The program writes to a file, because Windows programs under Wine cannot always write to a pipe. Its output is shown when
something failed. A program that crashes or hangs has failed the test it was in, and what did not run any more is
counted as failed too.
"""

import argparse
import os
import re
import signal
import subprocess
import sys
import time
from pathlib import Path
from xml.etree import ElementTree

RUN = re.compile(r"^\[ RUN      \] (\S+)")
END = re.compile(r"^\[\s+(OK|FAILED|SKIPPED)\s+\] (\S+?),? .*\((\d+) ms\)$")
FOUND = re.compile(r"^\[==========\] Running (\d+) tests? from")


class Outcome:
    """What the report tells that a program writes at its end, and without one, its output so far."""

    def __init__(self, report, text):
        self.found = 0
        self.ended = {"OK": [], "FAILED": [], "SKIPPED": []}
        self.running = None
        self.complete = report.exists()
        if self.complete:
            self.read_report(report)
        else:
            self.read_output(text)

    def read_report(self, report):
        for case in ElementTree.parse(report).iter("testcase"):
            if case.get("status") != "run":
                continue
            self.found += 1
            kind = "FAILED" if case.find("failure") is not None else "OK"
            kind = "SKIPPED" if case.get("result") == "skipped" else kind
            self.ended[kind].append(case.get("classname") + "." + case.get("name"))

    def read_output(self, text):
        for line in text.splitlines():
            line = line.rstrip("\r")
            # The first one is the program's own; another may be of a program that it started.
            if (match := FOUND.match(line)) and self.found == 0:
                self.found = int(match[1])
            elif match := RUN.match(line):
                self.running = match[1]
            elif match := END.match(line):
                self.ended[match[1]].append(match[2])
                self.running = None


def telling_lines(text):
    """What of the output is about failures: failed tests, what is outside any test, the last test of a cut-off run."""
    lines, test, outside = [], [], True
    for line in text.splitlines():
        if RUN.match(line):
            test, outside = [line], False
        elif not outside and (match := END.match(line.rstrip("\r"))):
            lines += test + [line] if match[1] == "FAILED" else []
            test, outside = [], True
        elif not outside:
            test.append(line)
        elif line and not line.startswith("["):
            lines.append(line)
    lines += test
    return lines if len(lines) <= 300 else lines[:100] + ["..."] + lines[-200:]


def newest_logs(folders, since):
    """The ends of the log files that were written since then."""
    files = [
        file
        for folder in folders
        for file in Path(folder).rglob("*")
        if file.suffix in (".txt", ".log") and file.is_file() and file.stat().st_mtime >= since
    ]
    for file in sorted(files, key=lambda file: file.stat().st_mtime)[-3:]:
        lines = file.read_bytes().decode("latin-1").splitlines()
        yield file, lines[-15:]


def stacks(process):
    """The stacks of the program's threads, when there is a debugger."""
    try:
        return subprocess.run(
            ["gdb", "-p", str(process.pid), "-batch", "-ex", "thread apply all backtrace 15"],
            capture_output=True, text=True, timeout=60, stdin=subprocess.DEVNULL, check=False,
        ).stdout
    except (OSError, subprocess.TimeoutExpired):
        return ""


def stop(process):
    for number in (signal.SIGABRT, signal.SIGKILL):
        try:
            os.killpg(process.pid, number)
        except ProcessLookupError:
            return
        try:
            process.wait(10)
        except subprocess.TimeoutExpired:
            continue


def run(command, output, stall, folder):
    """Runs until the end, or until nothing was written for `stall` seconds (nor an end seen in ten times as many): then
    with the evidence."""
    began = time.monotonic()
    with open(output, "wb") as file:
        process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.STDOUT, cwd=folder,
            start_new_session=True,
        )
    size, changed = 0, time.monotonic()
    try:
        while process.poll() is None:
            time.sleep(0.05)
            now = os.stat(output).st_size
            if now != size:
                size, changed = now, time.monotonic()
            if time.monotonic() - changed > stall or time.monotonic() - began > 10 * stall:
                evidence = stacks(process)
                stop(process)
                return None, evidence
    except BaseException:
        stop(process)
        raise
    return process.returncode, ""


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--name", required=True)
    parser.add_argument("--results", required=True)
    parser.add_argument("--filter", default="*")
    parser.add_argument("--stall", type=float, default=120)
    parser.add_argument("--folder", default=".")
    parser.add_argument("--logs", action="append", default=[])
    parser.add_argument("command", nargs="+")
    arguments = parser.parse_args()

    output = Path(arguments.results).with_name(re.sub(r"\W+", "-", arguments.name) + ".txt")
    started, began = time.time(), time.monotonic()
    # By its name alone: a Windows program knows this machine's folders under other names.
    report = Path(arguments.folder) / output.with_suffix(".xml").name
    report.unlink(missing_ok=True)
    command = arguments.command + [f"--gtest_filter={arguments.filter}", f"--gtest_output=xml:{report.name}"]
    code, evidence = run(command, output, arguments.stall, arguments.folder)
    seconds = time.monotonic() - began
    text = output.read_bytes().decode("utf-8", "replace")
    outcome = Outcome(report, text)

    passed, skipped = len(outcome.ended["OK"]), len(outcome.ended["SKIPPED"])
    failed = len(outcome.ended["FAILED"])
    lost = outcome.found - passed - skipped - failed
    failed += lost
    problems = [f"failed: {name}" for name in outcome.ended["FAILED"]]
    where = f"in {outcome.running}" if outcome.running else "outside any test"
    if code is None:
        problems.append(f"hung {where}: stopped after {seconds:.0f} s")
    elif not outcome.complete or (code != 0 and not outcome.ended["FAILED"]):
        problems.append(f"ended {where} with code {code}")
    if lost:
        problems.append(f"{lost} of {outcome.found} tests did not come to an end")
    if outcome.complete and outcome.found == 0:
        problems.append("no test matches")
    # A failure outside any test: a sanitizer's report at the end, or the program did not start.
    if (code != 0 or problems) and failed == 0:
        failed = 1

    if problems:
        print("\n".join(telling_lines(text)))
        print(f"(all of it: {output})")
        if code is None:
            if evidence:
                print("--- stacks\n" + evidence)
            for file, tail in newest_logs(arguments.logs, started):
                print(f"--- log so far: {file}")
                print("\n".join(tail))
    counts = f"{passed} passed, {failed} failed" + (f", {skipped} skipped" if skipped else "")
    print(f"  {arguments.name:<28} {counts}  ({seconds:.1f} s)")
    for problem in problems:
        print(f"    {problem}")
    sys.stdout.flush()
    with open(arguments.results, "a", encoding="utf-8") as results:
        results.write(f"{passed} {failed} {skipped} {arguments.name}\n")
    return 0 if failed == 0 else 124 if code is None else 1


if __name__ == "__main__":
    sys.exit(main())
