"""Reports as the companion program writes them: recordings made and replayed on the scripted desktop."""

import csv
import json
import os
import re

from program import korvane, scratch

LOST = 280  # how far to the left of its field a step is looked for that is not found
# Points are relative to the window.
NAME, STREET, CITY, STATUS, SUBMIT = (268, 68), (268, 100), (268, 132), (338, 370), (63, 370)
STEPS = [
    {"name": "Name", "action": "paste", "text": "${NAME}", "at": NAME},
    {"name": "Street", "action": "paste", "text": "12 Harbour Lane", "at": STREET},
    {"name": "City", "action": "type", "text": "Port Ellis", "at": CITY},
    {"action": "shortcut", "keys": "ctrl+a"},
    {"name": "Submit", "action": "click", "at": SUBMIT},
    {"name": "Status", "action": "wait", "text": "Submitted", "at": STATUS},
    {"name": "Confirmation", "action": "read", "variable": "CONFIRMATION", "at": STATUS},
    {"name": "Name again", "action": "check", "text": "${EXPECTED}", "match": "equals", "at": NAME},
]
TITLES = ["paste Name", "paste Street", "type City", "shortcut ctrl+a", "click Submit", "wait Status",
          "read Confirmation", "check Name again"]
# What a name may hold, and nothing of it may do.
HOSTILE = [
    "</script><script>document.title='taken'</script>",
    "<img src=x onerror=\"document.title='taken'\"><img src=http://127.0.0.1:1/x>",
    "<!--<script>",
    "\"quotes\" 'and' `ticks` ${x} \\u003c \\",
    "@DATA@ @SCRIPT@ )korvane\"",
    "\U0001f9ed \u4e2d\u6587 \u202edlrow\u202c \u2028 end",
    "\u0130\u0130\u0130 compass [a.b*(c]",
    "]]>&amp;&#x41;</text></svg>" + "W" * 120,
]


def report(name, expected_code, *arguments, steps=STEPS, change=lambda recording: None, rows=None, desktop=""):
    """A recording of the steps, changed, and then the report of its replay."""
    folder = scratch("report-" + name)
    script, recording, page = (folder / f"{name}{ending}" for ending in (".steps.json", ".json", ".html"))
    script.write_text(json.dumps({"korvane": 1, "steps": steps, "window": {"class": "OrderForm"}}), encoding="utf-8")
    code, out, err = korvane("record", "--script", script, recording, folder=folder)
    assert code == 0, out + err
    content = json.loads(recording.read_text(encoding="utf-8"))
    change(content)
    recording.write_text(json.dumps(content, ensure_ascii=False), encoding="utf-8")
    if rows:
        table = folder / f"{name}.csv"
        with open(table, "w", newline="", encoding="utf-8") as file:
            csv.writer(file).writerows(rows)
        arguments = ("--data", table, *arguments)
    words = ("replay", recording, "--timeout", 200, "--report", page, *arguments)
    code, out, err = korvane(*words, folder=folder, desktop=desktop)
    assert code == expected_code, f"{name}: exit code {code}\n{out}{err}"
    return page


def blocks(page):
    """The data of a report, in the order in which they were written."""
    written = page.read_text(encoding="utf-8")
    return [json.loads(block) for block in re.findall(r'<script type="application/json">(.*?)</script>', written, re.S)]


def good():
    return report("good", 0, "--set", "NAME=Anna", "--set", "EXPECTED=Anna", desktop="form 560,380")


def lose_street(recording):
    """No identification of the second step leads anywhere; its point is beside the window, but on the picture."""
    target = recording["steps"][1]["target"]
    target.update(automationId="999", x=target["x"] - LOST)
    target["levels"][-1]["childIndex"] = 9


def stopped():
    return report("stopped", 1, "--set", "NAME=Anna", "--set", "EXPECTED=Anna", change=lose_street)


def retried():
    return report("retried", 1, "--set", "NAME=Anna", "--set", "EXPECTED=Anna", "--retries", 1, change=lose_street)


def lose_path(recording):
    """The path of the second step leads nowhere; its AutomationId finds it all the same."""
    target = recording["steps"][1]["target"]
    target.update(identificationMethod="tree-path")
    target["levels"][-1]["childIndex"] = 9


def healed():
    return report("healed", 0, "--set", "NAME=Anna", "--set", "EXPECTED=Anna", change=lose_path)


def rows():
    """The second waits in vain."""
    table = [["NAME", "EXPECTED"], ["Anna", "Anna"], ["Bob", "Robert"], ["Cleo", "Cleo"]]
    steps = [*STEPS[:-1], {**STEPS[-1], "action": "wait", "match": "contains"}]
    return report("rows", 1, "--keep-going", steps=steps, rows=table)


def cancelled():
    table = [["NAME", "EXPECTED"], *[["Anna", "Anna"]] * 3]
    return report("cancelled", 5, "--row", "3", "--from", "2", rows=table, desktop="escape 3")


def hostile():
    """Hostile names of steps and windows, and texts that are not even characters."""

    def change(recording):
        recording["windows"][0]["title"] = HOSTILE[0]
        for step, text in zip(recording["steps"], HOSTILE):
            step["name"] = text

    steps = [{**STEPS[0], "name": str(number)} for number in range(len(HOSTILE))]
    name = os.fsdecode(b"NAME=</script>\xef\xbf\xbe \x01 \xed\xa0\x80 \xff </text></svg>")
    return report("hostile", 0, "--set", name, steps=steps, change=change)
