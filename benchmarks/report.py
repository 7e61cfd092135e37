#!/usr/bin/env python3
"""Makes the table of docs/performance.md from what the benchmarks measured.

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
    def __init__(self, title):
        self.title = title
        self.rows = []

    def add(self, figure, ours, floor, value, target, is_met):
        self.rows.append((figure, ours, floor, value, target, "yes" if is_met else "**no**"))

    def ratio(self, results, figure, ours, floor, most):
        value = results.median(ours) / results.median(floor)
        self.add(figure, results.time(ours), results.time(floor), f"{value:.2f}", f"≤ {most}", value <= most)

    def print(self):
        print(f"\n## {self.title}\n")
        print("| Figure | Ours | Beside | Value | Target | Met |")
        print("|---|---|---|---|---|---|")
        for row in self.rows:
            print("| " + " | ".join(row) + " |")


def native_tables(native):
    table = Table("Own cost, on the scripted desktop")
    own = native.median("click/remembered") - native.median("click/by hand, with the time")
    table.add("remembered click, log open: own time", native.time("click/remembered"),
              "the same calls: " + native.time("click/by hand, with the time"), show(own), "≤ 1 µs", own <= 1000)
    for counter in ("automation calls", "allocations"):
        value = native.counter("click/remembered", counter)
        table.add(f"remembered click: {counter}", f"{value:g}", "", f"{value:g}", "0", value == 0)
    own = statistics.median(native.counters_of("step", "own us")) * 1000
    table.add("whole step (resolve, click, paste, read back), log open: own time", native.time("step"),
              "the rest is the platform's", show(own), "≤ 20 µs", own <= 20000)
    table.ratio(native, "one log line beside a bare write", "log/line", "log/bare write", 1.5)
    value = native.median("log/wide stream") / native.median("log/line")
    table.add("a wide stream with endl beside one log line", native.time("log/line"), native.time("log/wide stream"),
              f"{value:.1f}", "≥ 2.5", value >= 2.5)
    reads = native.counters_of("paste", "reads per poll")
    late = native.counters_of("paste", "late polls")
    table.add("verified paste: reads a poll", f"{max(reads):g}", "", f"{max(reads):g}", "1", set(reads) == {1})
    table.add("verified paste: from the text's appearance to the return, in polls of 2 ms",
              " ".join(f"{value:.2f}" for value in late), "", f"{max(late):.2f}", "≤ 1", max(late) <= 1)
    table.print()


def path_tables(native):
    def calls(name):
        return native.counter(name, "calls")

    table = Table("Calls that leave the process, exact")
    levels = {depth: calls(f"path/ours/depth:{depth}/siblings:10/us:0") for depth in (1, 10, 19)}
    slope = (levels[19] - levels[1]) / 18
    table.add("one path level", "1 search with a cache request", "", f"{slope:g}", "1", slope == 1)
    for depth, siblings in ((5, 20), (19, 1000)):
        ours, walking = (calls(f"path/{way}/depth:{depth}/siblings:{siblings}/us:0") for way in ("ours", "walking"))
        table.add(f"path of {depth} levels among {siblings:,} siblings", f"{ours:g}: the window's element, its class, "
                  f"{depth} levels", f"child by child: {walking:,g}", f"{walking / ours:.0f} ×", "", True)
    per_level = (calls("path/walking/depth:5/siblings:20/us:0") - 1) / 5
    table.add("child by child, a level of 20", "1", f"{per_level:g}", f"{per_level:g} ×", "≥ 60 ×", per_level >= 60)
    for name in ("capture/depth:1/siblings:20", "capture/depth:5/siblings:20", "capture/depth:19/siblings:1000"):
        table.add(f"capture, {native.counter(name, 'levels'):g} levels in the record", f"{calls(name):g}", "",
                  f"{calls(name):g}", "", True)
    table.print()

    table = Table("The same path when a call has a price (5 levels among 20 siblings, wall time)")
    for cost in (100, 1000):
        ours, walking = (f"path/{way}/depth:5/siblings:20/us:{cost}" for way in ("ours", "walking"))
        table.add(f"{cost / 1000:g} ms a call", native.time(ours), "child by child: " + native.time(walking),
                  f"{native.median(walking) / native.median(ours):.0f} ×", "", True)
    table.print()


def growth_table(native):
    table = Table("Growth, on the scripted desktop")

    def flat(figure, names, per_unit, most):
        # The least of each: what memory and other programs add has nothing to do with growth.
        values = [min(native.samples[name]) / per_unit(name) for name in names]
        shown = "flat" if most is None else f"≤ {most} ×"
        table.add(figure, " ".join(show(value) for value in values), "", f"{values[-1] / min(values):.2f} ×", shown,
                  values[-1] / min(values) <= (most or 1.5))

    def named(prefix):
        return sorted((name for name in native.samples if name.startswith(prefix)), key=units)

    def units(name):
        return int(name.rsplit(":", 1)[1])

    calls = [native.counter(f"path/ours/depth:1/siblings:{count}/us:0", "calls") for count in (10, 100, 1000, 10000)]
    table.add("siblings 10 … 10,000: calls", " ".join(f"{count:g}" for count in calls), "", f"{calls[-1]:g}",
              "constant", len(set(calls)) == 1)
    one = lambda name: 1
    flat("remembered points 10, 1,000, 1,000,000: a click of any of them", named("growth/cache"), one, 1.5)
    flat("log of 0 MB, 1 MB, 1 GB: a line", named("growth/log"), one, None)
    flat("text 1 k … 16 M units, repetitive: a unit", named("growth/text, repetitive/"), units, None)
    flat("text 1 k … 16 M units, plain: a unit", named("growth/text, plain"), units, None)
    for subject, what in (("verifySimple", "verifySimple, 1 k … 16 M units"), ("html", "HTML fragment 1 k … 16 MB")):
        names, floors = named(f"growth/{subject}/"), named(f"growth/{subject} by hand/")
        values = [native.median(ours) / native.median(floor) for ours, floor in zip(names, floors)]
        table.add(f"{what}: beside the same copies by hand", " ".join(show(native.median(name)) for name in names),
                  " ".join(show(native.median(name)) for name in floors), f"{values[0]:.2f} … {values[-1]:.2f}", "flat",
                  values[-1] <= 1.5 * values[0])
    table.print()


def windows_table(windows, dll):
    table = Table("korvane.dll on real windows, under Wine")
    table.ratio(windows, "remembered click, log open, beside GetWindowRect, SetCursorPos, mouse_event and one write",
                "click/remembered", "click/by hand", 1.15)
    table.ratio(windows, "the same with IsWindow, which the click asks first", "click/remembered",
                "click/by hand, with IsWindow", 1.15)
    table.ratio(windows, "one log line beside a bare write", "log/line", "log/bare write", 1.3)
    value = windows.median("log/wide stream") / windows.median("log/line")
    table.add("a wide stream with endl beside one log line", windows.time("log/line"), windows.time("log/wide stream"),
              f"{value:.1f}", "≥ 2.5", value >= 2.5)
    table.ratio(windows, "whole step (capture, resolve, click, paste, verify), log open", "step/ours", "step/by hand",
                1.1)
    table.ratio(windows, "load and free beside an empty DLL", "load/korvane.dll", "load/empty.dll", 1.4)
    size = Path(dll).stat().st_size
    table.add("size of the DLL", f"{size:,} bytes", "", f"{size / 1024:.0f} KB", "≤ 256 KB", size <= 256 * 1024)
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
    path_tables(results)
    growth_table(results)
    if windows:
        windows_table(Results(windows, lambda name: "real_time"), dll)
    else:
        print("\nNot measured on Windows here: Wine or its compiler is missing.")


if __name__ == "__main__":
    main(*sys.argv[1:])
