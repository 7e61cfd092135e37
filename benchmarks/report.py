#!/usr/bin/env python3
"""Makes the tables of docs/performance.md from what the benchmarks measured.

report.py DLL NATIVE.json [WINDOWS.json LOAD.json] > docs/performance.md
"""

import json
import platform
import statistics
import sys
from collections import defaultdict
from pathlib import Path

UNIT = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


class Results:
    """Samples by name, in nanoseconds; natively of processor time, which other programs disturb least."""

    def __init__(self, files, clock):
        self.samples = defaultdict(list)
        self.counters = {}
        for file in files:
            for entry in json.loads(Path(file).read_text())["benchmarks"]:
                if entry["run_type"] == "iteration":
                    name = entry["name"].removesuffix("/iterations:1")
                    self.samples[name].append(entry[clock(name)] * UNIT[entry["time_unit"]])
                    self.counters[name] = entry

    def median(self, name):
        return statistics.median(self.samples[name])

    def time(self, name):
        samples = self.samples[name]
        return f"{show(self.median(name))} ({show(min(samples))} – {show(max(samples))})"

    def counter(self, name, counter):
        return self.counters[name][counter]

    def counters_of(self, prefix, counter):
        return [self.counters[name][counter] for name in self.counters if name.startswith(prefix)]


def show(nanoseconds):
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


class Table:
    """`beside` is what the same work costs without the library; `difference` how the two compare."""

    def __init__(self, title, meaning):
        self.title = title
        self.meaning = meaning
        self.rows = []

    def add(self, what, ours, beside, difference):
        self.rows.append((what, ours, beside, difference))

    def ratio(self, results, what, ours, floor):
        value = results.median(ours) / results.median(floor)
        self.add(what, results.time(ours), results.time(floor), f"{value:.2f} ×")

    def print(self):
        print(f"\n## {self.title}\n\n{self.meaning}\n")
        print("| | With the library | Beside it | Difference |")
        print("|---|---|---|---|")
        for row in self.rows:
            print("| " + " | ".join(row) + " |")


def native_tables(native):
    table = Table("The library's own time", """\
On the scripted desktop, whose calls answer within a microsecond, so that what the library adds to them shows. A click
at a remembered point makes no call of UI Automation and takes no memory; a whole step resolves its target, clicks, pastes
and reads the text back. A verified paste looks once every 2 ms and returns with the poll that first sees the text.""")
    own = native.median("click/remembered") - native.median("click/by hand, with the time")
    table.add("remembered click, log open", native.time("click/remembered"),
              "the same calls: " + native.time("click/by hand, with the time"), f"{show(own)} of our own")
    for counter in ("automation calls", "allocations"):
        table.add(f"remembered click: {counter}", f"{native.counter('click/remembered', counter):g}", "", "")
    own = statistics.median(native.counters_of("step", "own us")) * 1000
    table.add("whole step, log open", native.time("step"), "the rest is the platform's", f"{show(own)} of our own")
    table.ratio(native, "one log line, beside a bare write", "log/line", "log/bare write")
    table.ratio(native, "one log line, beside a wide stream with endl", "log/line", "log/wide stream")
    reads = native.counters_of("paste", "reads per poll")
    late = native.counters_of("paste", "late polls")
    table.add("verified paste: reads a poll", f"{max(reads):g}", "", "")
    table.add("verified paste: from the text's appearance to the return, in polls of 2 ms",
              " ".join(f"{value:.2f}" for value in late), "", "")
    table.print()


def instruction_table():
    figures = json.loads((Path(__file__).resolve().parent.parent / "tests/costs/figures.json").read_text())
    table = Table("The same in instructions", """\
The library's own, counted by Valgrind: the same wherever one compiler builds it. `./test` fails when one grows by more than
3 % (`scripts/costs.py`).""")
    for compiler, by_name in figures.items():
        for name, instructions in by_name.items():
            table.add(f"{name}, {compiler}", f"{instructions:,}", "", "")
    table.print()


def path_tables(native):
    def calls(name):
        return native.counter(name, "calls")

    table = Table("Calls that leave the process", """\
Exact. Between real processes each takes 0.1 ms to 1 ms, so that their number decides how long a search takes. A level
of a tree path is one search with a cache request, however many siblings there are; a walk from child to child asks each of
them.""")
    for depth, siblings in ((5, 20), (19, 1000)):
        ours, walking = (calls(f"path/{way}/depth:{depth}/siblings:{siblings}/us:0") for way in ("ours", "walking"))
        table.add(f"path of {depth} levels among {siblings:,} siblings", f"{ours:g}: the window's element, its class, "
                  f"{depth} levels", f"child by child: {walking:,g}", f"{walking / ours:.0f} times fewer")
    for name in ("capture/depth:1/siblings:20", "capture/depth:5/siblings:20", "capture/depth:19/siblings:1000"):
        table.add(f"capture, {native.counter(name, 'levels'):g} levels in the record", f"{calls(name):g}", "", "")
    for cost in (100, 1000):
        ours, walking = (f"path/{way}/depth:5/siblings:20/us:{cost}" for way in ("ours", "walking"))
        table.add(f"5 levels among 20 siblings, {cost / 1000:g} ms a call", native.time(ours),
                  "child by child: " + native.time(walking),
                  f"{native.median(walking) / native.median(ours):.0f} times faster")
    table.print()


def growth_table(native):
    table = Table("What grows with what", """\
On the scripted desktop. Each row takes the same work with more and more data; the last column tells how much more the
largest costs than the cheapest, for each unit of it.""")

    def flat(what, names, per_unit):
        # The least of each: what memory and other programs add has nothing to do with growth.
        values = [min(native.samples[name]) / per_unit(name) for name in names]
        table.add(what, " ".join(show(value) for value in values), "", f"{values[-1] / min(values):.2f} ×")

    def named(prefix):
        return sorted((name for name in native.samples if name.startswith(prefix)), key=units)

    def units(name):
        return int(name.rsplit(":", 1)[1])

    calls = [native.counter(f"path/ours/depth:1/siblings:{count}/us:0", "calls") for count in (10, 100, 1000, 10000)]
    table.add("siblings 10 … 10,000: calls", " ".join(f"{count:g}" for count in calls), "",
              f"{calls[-1] / calls[0]:.2f} ×")
    one = lambda name: 1
    flat("remembered points 10, 1,000, 1,000,000: a click of any of them", named("growth/cache"), one)
    flat("log of 0 MB, 1 MB, 1 GB: a line", named("growth/log"), one)
    flat("text 1 k … 16 M units, repetitive: a unit", named("growth/text, repetitive/"), units)
    flat("text 1 k … 16 M units, plain: a unit", named("growth/text, plain"), units)
    for subject, what in (("verifySimple", "verifySimple, 1 k … 16 M units"), ("html", "HTML fragment 1 k … 16 MB")):
        names, floors = named(f"growth/{subject}/"), named(f"growth/{subject} by hand/")
        values = [native.median(ours) / native.median(floor) for ours, floor in zip(names, floors)]
        table.add(what, " ".join(show(native.median(name)) for name in names),
                  "the same copies by hand: " + " ".join(show(native.median(name)) for name in floors),
                  f"{values[0]:.2f} … {values[-1]:.2f} × the copies")
    table.print()


def windows_table(windows, dll):
    table = Table("korvane.dll on real windows, under Wine", """\
Beside the same calls made by hand. Here the calls themselves take the time; the least and the most show how much they
vary.""")
    table.ratio(windows, "remembered click, log open, beside GetWindowRect, SetCursorPos, mouse_event and one write",
                "click/remembered", "click/by hand")
    table.ratio(windows, "the same with IsWindow, which the click asks first", "click/remembered",
                "click/by hand, with IsWindow")
    table.ratio(windows, "one log line, beside a bare write", "log/line", "log/bare write")
    table.ratio(windows, "one log line, beside a wide stream with endl", "log/line", "log/wide stream")
    table.ratio(windows, "whole step (capture, resolve, click, paste, verify), log open", "step/ours", "step/by hand")
    table.ratio(windows, "load and free, beside an empty DLL", "load/korvane.dll", "load/empty.dll")
    size = Path(dll).stat().st_size
    table.add("size of the DLL", f"{size:,} bytes", "", "")
    table.print()


def machine():
    info = Path("/proc/cpuinfo").read_text()
    model = next((line.split(":")[1].strip() for line in info.splitlines() if line.startswith("model name")), "unknown")
    return f"{info.count('processor')} × {model}, {platform.system()} {platform.release()}"


def main(dll, native, *windows):
    print("# What it costs\n")
    print("Made by `./bench`, which repeats all of it. Every figure stands beside what the same work costs without the")
    print("library, measured in the same run and in turn: machines differ, and their noise falls on both. Times are")
    print("medians with the least and the most in parentheses.\n")
    print(f"Machine: {machine()}.")
    timed_by_wall = ("path/", "step", "paste")
    results = Results([native], lambda name: "real_time" if name.startswith(timed_by_wall) else "cpu_time")
    native_tables(results)
    instruction_table()
    path_tables(results)
    growth_table(results)
    if windows:
        windows_table(Results(windows, lambda name: "real_time"), dll)
    else:
        print("\nNot measured on Windows here: Wine or its compiler is missing.")


if __name__ == "__main__":
    main(*sys.argv[1:])
