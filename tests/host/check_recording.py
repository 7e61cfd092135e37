"""Recording while somebody works: by a scripted user natively, by one with mouse and keyboard under Wine."""

import json
import unittest

from check_windows import KORVANE, Terminal, form
from person import person
from program import korvane, scratch
from repository import run_windows

END = "; user 9000 keys Ctrl+Shift+F10"
WORK = "user 100 click 308,98; user 300 type Ada; user 600 click 90,410"


def steps_of(recording):
    """What each step does, in a few words."""
    return [" ".join([step["action"], step.get("text", step.get("keys", step.get("variable", ""))),
                      step.get("target", {}).get("automationId", "")]).replace("  ", " ").strip()
            for step in recording["steps"]]


class Recording(unittest.TestCase):
    def records(self, code, desktop, *words, folder):
        answer, out, err = korvane("record", "new.json", *words, folder=folder, desktop=desktop)
        self.assertEqual(code, answer, out + err)
        return out + err

    @staticmethod
    def kept(folder, name="new.json"):
        return json.loads((folder / name).read_text(encoding="utf-8"))

    def test_user(self):
        """recording: what a user did is replayed elsewhere, is the same each time, and goes on behind a step"""
        folder = scratch("recording")
        out = self.records(0, WORK + "; user 900 keys Ctrl+Shift+F5; user 1000 click 350,410" + END, folder=folder)
        self.assertRegex(out, r"\n  2  click Submit\n.*\n  3  check field  \"Submitted: Ada / \"\n  clicks waited [\d.]+ ms until")
        self.assertEqual(["paste Ada 101", "click 301", "check Submitted: Ada / 401"], steps_of(self.kept(folder)))
        first = (folder / "new.json").read_bytes()
        code, out, err = korvane("replay", "new.json", folder=folder, desktop="form 400,200")
        self.assertEqual(0, code, out + err)
        self.records(0, WORK + "; user 900 keys Ctrl+Shift+F5; user 1000 click 350,410" + END, "--force", folder=folder)
        self.assertEqual(first, (folder / "new.json").read_bytes())
        # What is done before is seen in what the user finds.
        self.records(0, "user 3000 keys Ctrl+F7; user 3200 click 308,98" + END, "--from", "1", "--hotkey", "read=Ctrl+F7", folder=folder)
        self.assertEqual(["paste Ada 101", "read VALUE_1 101", "click 301", "check Submitted: Ada / 401"], steps_of(self.kept(folder)))

    def test_ends(self):
        """recording: whatever ends it, its steps are kept; without one nothing is written"""
        folder = scratch("recording-ends")
        self.records(0, WORK + "; interrupt 2000", folder=folder)
        self.assertEqual(["paste Ada 101", "click 301"], steps_of(self.kept(folder)))
        self.assertIn("gone without ending", self.records(7, WORK, "--force", folder=folder))
        self.assertEqual(2, len(self.kept(folder)["steps"]))
        self.assertIn("has 2 steps", self.records(2, WORK, "--from", "3", folder=folder))
        self.assertIn("--from", self.records(2, WORK, "--from", "1", "--force", folder=folder))
        self.assertIn("a step before that place failed", self.records(4, "no-form; " + WORK, "--from", "1", folder=folder))
        (folder / "new.json").unlink()
        self.assertIn("no step was recorded", self.records(1, "user 1 keys Ctrl+Shift+F10", folder=folder))
        for hotkey in ("undo", "undo=", "undo=Ctrl", "jump=F5", "undo=Ctrl+Shift+F9"):
            self.assertIn("--hotkey", self.records(2, WORK, "--hotkey", hotkey, folder=folder))
        self.assertFalse((folder / "new.json").exists())

    def test_start(self):
        """recording: the program that it names is started when its window is not there, and closed when told"""
        folder = scratch("recording-start")
        self.records(0, "no-form; " + WORK + END, "--start", "order_form", folder=folder)
        self.assertEqual("order_form", self.kept(folder)["start"])
        for desktop, words in (("no-form", ("--close",)), ("", ()), ("no-form", ("--dry-run",))):
            code, out, err = korvane("replay", "new.json", *words, folder=folder, desktop=desktop)
            self.assertEqual(0 if "--dry-run" not in words else 4, code, out + err)
            self.assertNotIn("still open", out)
        self.assertIn("no such program", self.records(4, "no-form; " + WORK, "--start", "nothing", "--force", folder=folder))

    def test_script_that_acts(self):
        """recording: a script that acts finds what its own steps bring about, and stops at the first that fails"""
        folder = scratch("recording-script")
        steps = [{"action": "paste", "text": "Ada", "at": [268, 58]}, {"action": "click", "at": [63, 370]},
                 {"action": "check", "text": "Submitted: Ada / ", "match": "equals", "at": [310, 370]}]
        script = folder / "script.json"
        script.write_text(json.dumps({"korvane": 1, "window": {"title": "Order form"}, "steps": steps}), encoding="utf-8")
        self.records(0, "", "--script", "script.json", "--do", folder=folder)
        self.assertEqual(["paste Ada 101", "click 301", "check Submitted: Ada / 401"], steps_of(self.kept(folder)))
        steps[2]["text"] = "Sent"
        script.write_text(json.dumps({"korvane": 1, "window": {"title": "Order form"}, "steps": steps}), encoding="utf-8")
        self.assertIn("Submitted: Ada", self.records(1, "", "--script", "script.json", "--do", "--force", folder=folder))
        self.assertEqual("Submitted: Ada / ", self.kept(folder)["steps"][2]["text"])

    def test_windows(self):
        """Windows: somebody with mouse and keyboard is recorded; programs get all of it; a replay does the same elsewhere"""
        folder = scratch("recording-windows")
        run_windows(KORVANE, "--version", folder=folder)
        with form("40,40"), person() as user:
            terminal = Terminal("wine", KORVANE, "record", "new.json", folder=folder)
            terminal.read_until("ends; so does Ctrl+C here")
            user.click(308, 98)
            user.type("Ada Lwo")
            user.press("BackSpace", "BackSpace")
            user.type("owe")
            user.press("Tab")
            user.type("Hill 3")
            user.drag(308, 98, 380, 98)
            terminal.read_until("dragging cannot be recorded")
            user.click(308, 300)
            user.type("1234567")
            user.click(308, 250)
            user.type("ring")
            user.press("Return")
            user.type("twice")
            user.click(90, 410)
            terminal.read_until("click Submit")
            user.press("ctrl+shift+F5")
            user.click(350, 410)
            terminal.read_until("Submitted: Ada Lowe")
            user.click(200, 410, times=2)
            terminal.read_until("double-click Clear")
            user.press("ctrl+shift+F8")
            terminal.read_until("taken back")
            user.press("ctrl+shift+F10")
            self.assertEqual(0, terminal.wait())
        recording = self.kept(folder)
        self.assertEqual(["paste Ada Lowe 101", "shortcut Tab", "paste Hill 3 102", "type 1234567 203",
                          "paste ring\r\ntwice 202", "click 301",
                          "check Submitted: Ada Lowe / 401"], steps_of(recording))
        self.assertEqual(["Name", "Street", "Submit"], [recording["steps"][i]["name"] for i in (0, 2, 5)])
        self.assertEqual({"0"}, {step["target"]["hwnd"] for step in recording["steps"] if "target" in step})
        with form("420,200"):
            code, out = run_windows(KORVANE, "replay", "new.json", folder=folder)
            self.assertEqual(0, code, out)


if __name__ == "__main__":
    unittest.main()
