"""Only the recorded element is acted on: what a replay and a check say when something else answers for it."""

import json
import re
import unittest
from xml.etree import ElementTree

from program import SCRIPT, VALUES, korvane, recorded, scratch

FORM = {"title": "Order form", "class": "OrderForm", "process": "order_form.exe"}
DIALOG = {"title": "Confirm", "class": "OrderDialog"}
REPLAY = ("replay", "order.json", *VALUES, "--timeout", 400)


class Identity(unittest.TestCase):
    def setUp(self):
        self.folder = scratch("identity")
        (self.folder / "order.json").write_text(recorded(), encoding="utf-8")

    def says(self, expected, *words, desktop=""):
        code, out, err = korvane(*words, folder=self.folder, desktop=desktop)
        self.assertEqual(expected, code, out + err)
        return out + err

    def changed(self, change, base=None):
        recording = json.loads(base or recorded())
        change(recording)
        (self.folder / "order.json").write_text(json.dumps(recording), encoding="utf-8")

    def record(self, *steps, window=None, desktop=""):
        """A recording of steps made on that desktop, and what was said about it."""
        script = {"korvane": 1, "window": window or FORM, "steps": steps}
        (self.folder / "s.json").write_text(json.dumps(script), encoding="utf-8")
        out = self.says(0, "record", "order.json", "--script", "s.json", "--force", desktop=desktop)
        return json.loads((self.folder / "order.json").read_text(encoding="utf-8")), out

    def agree(self, code, desktop):
        """Both commands take the same view of it."""
        checked = self.says(code, "check", "order.json", desktop=desktop)
        return checked, self.says(code, *REPLAY, desktop=desktop)

    def test_equal_ids(self):
        """identity: of two elements with one AutomationId each step reaches its own, by its path"""
        twins = "id 102,101"
        steps = [{"name": name, "action": "paste", "text": f"{name}!", "at": [268, y]} for name, y in (("A", 58), ("B", 90))]
        checks = [{"action": "check", "text": f"{name}!", "match": "equals", "at": [268, y]}
                  for name, y in (("A", 58), ("B", 90))]
        recording, out = self.record(*steps, *checks, desktop=twins)
        self.assertEqual(["tree-path"] * 4, [step["target"]["identificationMethod"] for step in recording["steps"]])
        self.assertEqual(4, out.count("its AutomationId is not unique: 2 elements of the window have it"), out)
        self.assertIn("  4 steps: 4 ok, 0 healed", self.agree(0, twins)[1])
        # Preferred all the same, it is no choice: the path has to find it.
        self.changed(lambda r: r["steps"][0]["target"].update(identificationMethod="automation-id"),
                     json.dumps(recording))
        checked, out = self.agree(0, twins)
        self.assertIn("tree path (healed)", checked)
        self.assertIn("  4 steps: 3 ok, 1 healed, 0 failed, 0 not run", out)

    def test_shared_id_proves_nothing(self):
        """identity: at the recorded point, an AutomationId that others have, too, does not prove the element"""
        recording, _ = self.record({"name": "B", "action": "click", "at": [268, 90]}, desktop="id 102,101")
        self.changed(lambda r: r["steps"][0]["target"]["levels"][2].update(childIndex=9), json.dumps(recording))
        checked, out = self.agree(1, "id 102,101")
        self.assertRegex(checked, r"NONE +not unique, [\d.]+ ms +not found, [\d.]+ ms +not unique")
        self.assertIn("its screen point: what is there could be any other of its kind", out)

    def test_preferred_comes_late(self):
        """identity: what is preferred may come a moment later; only then does another identification heal"""
        recording, _ = self.record({"name": "Name", "action": "click", "at": [268, 58]}, desktop="id 101,20319326")
        self.changed(lambda r: r["steps"][0]["target"].update(identificationMethod="automation-id"), json.dumps(recording))
        words = ("replay", "order.json", "--timeout", 2000)
        self.assertIn("1 ok, 0 healed", self.says(0, *words, desktop="id 101,77712345; rename 200 101,20319326"))
        self.assertIn("0 ok, 1 healed", self.says(0, *words, desktop="id 101,77712345"))

    def test_moved_window(self):
        """identity: a window that moves during a replay, or between rows of data, is clicked where it is now"""
        (self.folder / "data.csv").write_text("NAME,ARTICLE\nAda,Lamp\nBen,Rope\n", encoding="utf-8")
        for moment in (3, 12, 25, 35):
            out = self.says(0, "replay", "order.json", "--data", "data.csv", desktop=f"move {moment} 500,300")
            self.assertIn('"Submitted: Ben / Rope"', out)
            self.assertIn("  22 steps: 22 ok, ", out)

    def test_another_element(self):
        """identity: what stands at the point, or at the end of the path, is not taken for the recorded element"""
        def only_point(recording):
            recording["steps"] = recording["steps"][:1]
            recording["steps"][0]["target"].update(identificationMethod="automation-id", automationId="999", x=103, y=410)
        self.changed(only_point)
        checked, out = self.agree(1, "")
        self.assertIn("Nothing was touched.", out)
        # On another page of a wizard the path finds something; its AutomationId is found nowhere.
        def street(recording):
            recording["steps"] = recording["steps"][2:3]
        self.changed(street)
        checked, out = self.agree(1, "id 102,999")
        self.assertIn("ANOTHER ELEMENT", checked)
        self.assertIn('what it leads to is another element: its AutomationId is "999"', out)
        # Rows without any id differ in their labels alone: another one at the same place is another one.
        recording, _ = self.record({"name": "Row", "action": "click", "at": [340, 306]})
        self.assertEqual("Courier", recording["steps"][0]["label"])
        self.assertIn("  1 steps: 1 ok", self.agree(0, "")[1])
        self.changed(lambda r: r["steps"][0].update(label="Pigeon"), json.dumps(recording))
        self.assertIn('it is labelled "Courier", not "Pigeon"', self.agree(1, "")[1])

    def test_owned_dialog(self):
        """identity: a path recorded from a dialog's owner leads on in the dialog"""
        recording, _ = self.record({"name": "Reason", "action": "paste", "text": "why", "at": [120, 42]},
                                   {"name": "OK", "action": "click", "at": [70, 84]}, window=DIALOG, desktop="dialog 0")
        self.assertEqual(["Confirm"], [window["title"] for window in recording["windows"]])

        def from_owner(r, owner="OrderForm"):
            for step in r["steps"]:
                step["target"]["identificationMethod"] = "tree-path"
                step["target"]["levels"].insert(0, {"controlType": 50032, "className": owner, "childIndex": 1})
                step["target"]["pathLength"] += 1
        self.changed(from_owner, json.dumps(recording))
        self.assertIn("  2 steps: 2 ok, 0 healed", self.agree(0, "dialog 0; form 300,300; dialog 0")[1])
        self.assertIn("  2 steps: 2 ok, ", self.says(0, *REPLAY, desktop="dialog 300"))
        # A message box over a wizard: both have the class of every dialog.
        self.changed(lambda r: from_owner(r, "OrderDialog"), json.dumps(recording))
        self.assertIn("  2 steps: 2 ok, 0 healed", self.agree(0, "dialog 0")[1])

    def test_late_target(self):
        """identity: a target that comes later is waited for, as long as the time-out says"""
        self.record({"name": "Next", "action": "click", "at": [60, 403]}, desktop="late 0")
        self.assertRegex(self.says(0, *REPLAY, desktop="late 300"), r"1/1 +click Next +ok +3\d\d\.\d ms")
        self.assertIn("nothing in the window has it", self.says(1, *REPLAY, desktop="late 900"))

    def test_retries(self):
        """identity: a step is tried again when nothing was touched, every try is told, and nothing is done twice"""
        self.record({"name": "Next", "action": "click", "at": [60, 403]}, desktop="late 0")
        words = (*REPLAY, "--retries", 2, "--junit", "r.xml")
        out = self.says(0, *words, desktop="late 1500")
        self.assertEqual(2, out.count("trying again"), out)
        self.assertIn("1 ok, 0 healed, 0 failed, 0 not run; 1 not on the first try", out)
        case = ElementTree.parse(self.folder / "r.xml").getroot()[0][0]
        self.assertEqual(2, len(case.findall("flakyFailure")))
        self.assertIn("nothing in the window has it", case.find("flakyFailure/system-out").text)
        self.says(1, *words, desktop="late 9000")
        case = ElementTree.parse(self.folder / "r.xml").getroot()[0][0]
        self.assertEqual((1, 2), (len(case.findall("failure")), len(case.findall("rerunFailure"))))
        # A button takes the click, and shows no text: what else the click did nobody knows.
        self.record({"name": "Submit", "action": "paste", "text": "x", "at": [63, 370]})
        self.assertNotIn("trying again", self.says(1, *words))
        self.record({"name": "Confirmation", "action": "check", "text": "x", "at": [63, 370]})
        self.assertEqual(2, self.says(1, *words).count("trying again"))

    def test_out_of_reach(self):
        """identity: nothing is clicked where the target cannot be seen"""
        for place, said in (("103 148,900", "is outside of the window"), ("103 148,430", "out of view")):
            _, out = self.agree(1, f"place {place}")
            self.assertIn(said, out)
            self.assertIn("  11 steps: 3 ok, 0 healed, 1 failed, 7 not run", out)
        out = self.says(1, *REPLAY, desktop="cover 60,60,500,400")
        self.assertIn("another window covers it and does not make way", out)

    def test_places(self):
        """identity: in a whole window or canvas the recorded place counts, not its middle"""
        for desktop, at, said in (("canvas", [300, 400], "the target is a whole pane"),
                                  ("", [20, 375 + 30], "the target is a whole window")):
            recording, out = self.record({"name": "Spot", "action": "click", "at": at}, desktop=desktop)
            self.assertIn(said, out)
            self.assertIn("only its point is left", out)
            self.assertEqual("undecided", recording["steps"][0]["target"]["identificationMethod"])
            report = self.folder / "r.html"
            self.says(0, *REPLAY, "--report", report, desktop=f"{desktop}; move 0 200,100")
            self.changed(lambda r: r["steps"][0]["target"].update(identificationMethod="tree-path"), json.dumps(recording))
            self.assertIn("the recorded place in it counts", self.says(0, *REPLAY, desktop=desktop))
        # A row is there now where its list was recorded.
        recording, out = self.record({"name": "List", "action": "click", "at": [340, 332]})
        self.assertIn("the target is a whole list, no part of it", out)
        for method in ("undecided", "automation-id"):
            self.changed(lambda r: r["steps"][0]["target"].update(identificationMethod=method, y=346), json.dumps(recording))
            self.agree(1, "")

    def test_texts(self):
        """identity: a text counts when it is seen in the field: pasted, typed, replaced, or taken away"""
        def step(action, text, at, **fields):
            return {"name": action, "action": action, "text": text, "at": [268, at], **fields}
        self.record(step("paste", "one", 58), step("paste", "two", 58, replace=True), step("check", "two", 58, match="equals"),
                    step("type", "three", 58, replace=True), step("check", "three", 58, match="equals"),
                    step("paste", "", 58, replace=True), step("type", "x", 58), step("check", "x", 58, match="equals"))
        self.assertIn("  8 steps: 8 ok, ", self.says(0, *REPLAY))
        # A variable that is empty: nothing to wait for.
        self.record(step("paste", "${NAME}", 58))
        out = self.says(0, "replay", "order.json", "--set", "NAME=")
        self.assertIn("the text is empty: nothing was pasted", out)
        self.assertRegex(out, r"ok +\d\.\d ms")
        # A field that takes no text, and one that shows another: the element was found, so no other one is proposed.
        for at, x in ((370, 338), (308, 190)):
            self.record({"name": "No", "action": "paste", "text": "abc", "at": [x, at]})
            out = self.says(1, *REPLAY)
            self.assertIn("but the text did not show", out)
            self.assertNotIn("identificationMethod", out)

    def test_actions(self):
        """identity: double clicks, and any combination of keys"""
        self.record({"name": "Twice", "action": "double-click", "at": [63, 370]},
                    {"action": "shortcut", "keys": "Ctrl+Shift+S"}, {"action": "shortcut", "keys": "F10"},
                    {"action": "shortcut", "keys": "alt+f4"})
        self.assertIn("  4 steps: 4 ok, ", self.says(0, *REPLAY))

    def test_keys_elsewhere(self):
        """identity: keys are pressed only while the step's window has them"""
        self.record({"action": "shortcut", "keys": "F10"})
        out = self.says(1, *REPLAY, desktop="steal 0")
        self.assertIn('keys would go to another window: "Notice"', out)
        self.assertIn("Bring the window to the front yourself", out)
        self.assertIn("  1 steps: 1 ok", self.says(0, *REPLAY))

    def test_healing(self):
        """identity: a healed step is told, is a failure when strict, and its correction is written beside"""
        before = recorded()
        lost = json.loads(before)
        lost["steps"][2]["target"]["levels"][2]["childIndex"] = 7
        (self.folder / "order.json").write_text(json.dumps(lost), encoding="utf-8")
        checked, out = self.agree(0, "")
        self.assertIn("AutomationId (healed)", checked)
        self.assertRegex(out, r"3/11 +paste Street +healed +")
        self.assertIn("its tree path: it leads nowhere from level 3", out)
        self.says(1, "check", "order.json", "--strict")
        out = self.says(1, *REPLAY, "--strict")
        self.assertIn("2 ok, 0 healed, 1 failed, 8 not run", out)
        self.says(0, *REPLAY, "--proposals", "new.json")
        self.says(0, "check", "order.json", "--fix")
        for name in ("new.json", "order.fixed.json"):
            fixed = json.loads((self.folder / name).read_text(encoding="utf-8"))
            self.assertEqual(("automation-id", 2), (fixed["steps"][2]["target"]["identificationMethod"],
                                                    fixed["steps"][2]["target"]["levels"][2]["childIndex"]))
        self.assertEqual(lost, json.loads((self.folder / "order.json").read_text(encoding="utf-8")))
        self.assertIn("is there already", self.says(6, "check", "order.json", "--fix"))
        self.says(2, *REPLAY, "--proposals", "order.json")
        self.says(0, "check", "order.json", "--fix", "--force")
        self.assertIn("  11 steps: 11 ok, ", self.says(0, *REPLAY, "--strict"))

    def test_readiness(self):
        """identity: what would make input go astray is told before the first step, with a code of its own"""
        for desktop, said in (("locked", "the desktop is locked"), ("elevated 0", "runs as administrator")):
            self.assertIn(said, self.says(8, *REPLAY, desktop=desktop))
        # A window that came later, or whose program was not asked before.
        out = self.says(1, *REPLAY, desktop="elevated 5")
        self.assertIn("What is there: the window takes no input: its program runs as administrator", out)
        self.assertIn("note: recorded on a screen of 1920 x 1080 at 100 %, this one is 1920 x 1080 at 150 %",
                      self.says(0, *REPLAY, desktop="dpi 144"))
        self.record({"name": "Spot", "action": "click", "at": [300, 400]}, desktop="canvas")
        self.assertIn('step 1 "Spot" has nothing but its point', self.says(8, *REPLAY, desktop="canvas; dpi 144"))

    def test_generated_ids(self):
        """identity: an AutomationId that looks generated comes after the path"""
        recording, _ = self.record({"name": "Name", "action": "paste", "text": "x", "at": [268, 58]}, desktop="id 101,20319326")
        self.assertEqual("tree-path", recording["steps"][0]["target"]["identificationMethod"])
        self.assertIn("1 ok", self.says(0, *REPLAY, desktop="id 101,77712345"))
        self.assertIn(' "tree path"', self.says(0, "capture", "--at", "308,98", "--json", desktop="id 101,20319326"))


if __name__ == "__main__":
    unittest.main()
