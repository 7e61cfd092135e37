"""`korvane edit`: what it changes, what it leaves alone, and what it refuses."""

import json
import resource
import unittest

from program import VALUES, korvane, recorded, scratch


class Edit(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = scratch("edit")
        self.file = self.folder / "order.json"
        self.file.write_text(recorded(), encoding="utf-8")

    def edits(self, *words, expected=0, desktop="", **options):
        code, out, err = korvane("edit", "order.json", *words, folder=self.folder, desktop=desktop, **options)
        self.assertEqual(expected, code, out + err)
        return out + err

    def now(self):
        return json.loads(self.file.read_text(encoding="utf-8"))

    def names(self):
        return [step["name"] for step in self.now()["steps"]]

    def test_listed(self):
        """edit: without a change it lists the steps and leaves the file alone"""
        rows = self.edits().splitlines()
        self.assertEqual(12, len(rows))
        self.assertRegex(rows[2], r"^  2   Name +paste +\$\{NAME\} +Order form +101 +308,98$")
        self.assertEqual(recorded(), self.file.read_text(encoding="utf-8"))

    def test_moved(self):
        """edit: steps are deleted, moved and renamed, and nothing else in them changes"""
        before = json.loads(recorded())
        self.edits("--delete", "1,3,1")
        self.edits("--move", 1, 3)
        self.edits("--rename", 2, "Artikel „Ä“")
        expected = [before["steps"][i] for i in (3, 4, 1, *range(5, 11))]
        expected[1]["name"] = "Artikel „Ä“"
        self.assertEqual({**before, "steps": expected}, self.now())
        self.edits("--move", 9, 1)
        self.edits("--move", 1, 9)
        self.assertEqual({**before, "steps": expected}, self.now())

    def test_repointed(self):
        """edit: a step that points elsewhere acts there in the next replay; its old window goes with its last step"""
        swapped = self.now()
        swapped["windows"].insert(0, {"title": "Another", "class": "", "process": ""})
        for step in swapped["steps"]:
            step["window"] = 1 if step["name"] == "Street" else 2
        swapped["steps"] = swapped["steps"][1:]
        self.file.write_text(json.dumps(swapped), encoding="utf-8")
        # The city's field, on a form in another place.
        self.edits("--repoint", 2, "--at", "658,422", desktop="form 390,300")
        after = self.now()
        street, city = (next(step for step in after["steps"] if step["name"] == name) for name in ("Street", "City"))
        self.assertEqual(["Order form"], [window["title"] for window in after["windows"]])
        self.assertEqual({1}, {step["window"] for step in after["steps"]})
        self.assertEqual(("paste", "12 Harbour Lane", "103", "0"), (
            street["action"], street["text"], street["target"]["automationId"], street["target"]["hwnd"]))
        self.assertEqual(city["target"]["levels"], street["target"]["levels"])
        # What was the city's step adds to the field that has the street now.
        self.edits("--delete", "3,4,5,6,7,8,9,10")
        after = self.now()
        after["steps"].append({**street, "name": "Seen", "action": "check", "match": "equals"})
        self.file.write_text(json.dumps(after), encoding="utf-8")
        code, out, err = korvane("replay", "order.json", *VALUES, folder=self.folder)
        self.assertEqual(0, code, out + err)

    def test_refused(self):
        """edit: what cannot be is refused in one line, and the file stays as it was"""
        for words, code, line in (
            (("--delete", "12"), 2, "order.json: has no step 12, only 1 to 11"),
            (("--delete", "0"), 2, "order.json: has no step 0, only 1 to 11"),
            (("--move", "1", "x"), 2, "order.json: has no step x, only 1 to 11"),
            (("--rename", "99999999999999999999", "x"), 2, "order.json: has no step 99999999999999999999, only 1 to 11"),
            (("--delete", "1,2,3,4,5,6,7,8,9,10,11"), 2,
             "order.json: a recording without steps is none; delete the file instead"),
            (("--repoint", "2"), 2, 'order.json: step 2 "Name": --at X,Y tells where it is to point'),
            (("--repoint", "2", "--at", "5000,5000"), 1, 'order.json: step 2 "Name": there is no element at 5000,5000'),
        ):
            with self.subTest(words):
                self.assertEqual(f"korvane: {line}\n", self.edits(*words, expected=code))
                self.assertEqual(recorded(), self.file.read_text(encoding="utf-8"))

    def test_full_disk(self):
        """edit: a recording that cannot be written as a whole is left as it was"""
        self.edits("--delete", "1", expected=6,
                   # Python has programs ignore the signal that tells of it.
                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (3000, 3000)), restore_signals=False)
        self.assertEqual(recorded(), self.file.read_text(encoding="utf-8"))
        self.assertEqual(["order.json"], [each.name for each in self.folder.iterdir()])
