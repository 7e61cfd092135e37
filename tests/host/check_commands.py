"""The commands on the scripted desktop: what they find, do and say, and what they answer to bad input."""

import json
import os
import re
import resource
import unittest
import unittest.mock
from pathlib import Path
from xml.etree import ElementTree

from program import CONFIRMATION, SCRIPT, VALUES, korvane, recorded, scratch
from repository import ROOT

ELSEWHERE = "form 560,380"


class Commands(unittest.TestCase):
    def setUp(self):
        self.folder = scratch("commands")
        (self.folder / "order.json").write_text(recorded(), encoding="utf-8")

    def says(self, expected, *words, desktop="", folder=None):
        """Runs it, and returns what it said; `expected` is the exit code."""
        code, out, err = korvane(*words, folder=folder or self.folder, desktop=desktop)
        self.assertEqual(expected, code, out + err)
        return out + err

    def refuses(self, expected, line, *words, **options):
        """One line on the error output, the code, and no file that was not there."""
        before = sorted(os.listdir(self.folder))
        code, out, err = korvane(*words, folder=self.folder, **options)
        self.assertEqual((expected, f"korvane: {line}\n"), (code, err), out)
        self.assertEqual(before, sorted(os.listdir(self.folder)))

    def changed(self, change, base=None):
        """The recording with a change, as order.json."""
        recording = json.loads(base or recorded())
        change(recording)
        (self.folder / "order.json").write_text(json.dumps(recording), encoding="utf-8")

    def test_recording(self):
        """commands: a recording names every field, is the same each time, and replaces no file unless told"""
        recording = json.loads(recorded())
        self.assertEqual([1, 11, 1], [recording["korvane"], len(recording["steps"]), len(recording["windows"])])
        self.assertEqual("Order form OrderForm order_form.exe", " ".join(
            recording["windows"][0][field] for field in ("title", "class", "process")))
        name = recording["steps"][1]
        self.assertEqual(("Name", "paste", "${NAME}"), (name["name"], name["action"], name["text"]))
        self.assertEqual("automation-id 101 308 98 3", "{identificationMethod} {automationId} {x} {y} {pathLength}".format(
            **name["target"]))
        self.assertEqual([(50032, "OrderForm"), (50033, "OrderFormPanel"), (50004, "Edit")],
                         [(level["controlType"], level["className"]) for level in name["target"]["levels"]])
        # A step is a few lines.
        self.assertLess(recorded().count("\n"), 20 * len(recording["steps"]))
        self.assertIn('\n          {"controlType": 50032, "className": "OrderForm", "childIndex": 1},\n', recorded())
        self.refuses(6, "order.json: is there already; --force replaces it", "record", "order.json", "--script", SCRIPT)
        self.says(0, "record", "order.json", "--script", SCRIPT, "--force")
        self.assertEqual(recorded(), (self.folder / "order.json").read_text(encoding="utf-8"))

    def test_check(self):
        """commands: check tells which identification answers, which would, and does nothing"""
        rows = self.says(0, "check", "order.json", desktop=ELSEWHERE).splitlines()
        self.assertEqual("  11 steps, 0 cannot be done, 0 healed", rows[-1])
        for row, answer in ((rows[2], "AutomationId"), (rows[3], "tree path")):
            self.assertRegex(row, rf"{answer}, [\d.]+ ms +found, [\d.]+ ms +found, [\d.]+ ms +found, [\d.]+ ms$")
        # Another button stands where this one is recorded by nothing but its point.
        self.changed(lambda recording: recording["steps"][0]["target"].update(
            identificationMethod="undecided", x=103))
        self.assertIn("ANOTHER ELEMENT", self.says(1, "check", "order.json"))

    def test_replay(self):
        """commands: a replay does the steps, elsewhere and under another title, and reads what came of them"""
        for desktop in ("", ELSEWHERE, "title"):
            out = self.says(0, "replay", "order.json", *VALUES, desktop=desktop)
            self.assertIn(CONFIRMATION, out)
            self.assertEqual(11, len(re.findall(r"^  \d+/11 +.* ok +[\d.]+ ms$", out, re.M)), out)
            self.assertIn("  11 steps: 11 ok, 0 healed, 0 failed, 0 not run, in ", out)
        self.assertIn("nothing was done", self.says(0, "replay", "order.json", *VALUES, "--dry-run"))
        self.assertIn("  9 steps: 9 ok, 0 healed, 0 failed, ", self.says(0, "replay", "order.json", *VALUES, "--from", 3, "--dry-run"))

    def test_data(self):
        """commands: a row of data is a run, and the command line goes before it"""
        data = self.folder / "data.csv"
        data.write_text('NAME,ARTICLE\nAda,Lamp\n"Ben, jr.",Rope\n', encoding="utf-8")
        out = self.says(0, "replay", "order.json", "--data", "data.csv")
        self.assertIn("row 2 of 3\n", out)
        self.assertIn("row 3 of 3, less than a minute left\n", out)
        self.assertIn("Submitted: Ben, jr. / Rope", out)
        self.assertIn("Submitted: Ben, jr. / Oar", self.says(0, "replay", "order.json", "--data", "data.csv", "--set",
                                                             "ARTICLE=Oar"))

    def test_rows(self):
        """commands: a failed row says how to go on, without doing again what was done"""
        (self.folder / "data.csv").write_text("NAME,ARTICLE,SEEN\nAda,Lamp,Ada\nBen,Rope,Bob\nCleo,Oar,Cleo\n")
        self.changed(lambda recording: recording["steps"][10].update(text="${SEEN}"))
        words = ("replay", "order.json", "--data", "data.csv")
        out = self.says(1, *words)
        self.assertRegex(out, r'row 3: Step 11 .* Go on from here: the same command with --row 3 --from 11\.\n')
        self.assertIn("  33 steps: 21 ok, 0 healed, 1 failed, 11 not run, ", out)
        self.assertIn("  rows not begun: 1\n", out)
        out = self.says(0, *words, "--row", 3, "--from", 11, "--dry-run")
        self.assertIn("  12 steps: 12 ok, 0 healed, 0 failed, ", out)
        self.assertNotIn("row 2", out)
        # What comes after the failure in its row is left alone.
        nowhere = {"automationId": "", "pathLength": 0, "levels": [], "x": 5, "y": 5}
        self.changed(lambda recording: recording["steps"][2]["target"].update(nowhere))
        out = self.says(1, *words, "--keep-going")
        self.assertIn("  33 steps: 6 ok, 0 healed, 3 failed, 24 not run, ", out)
        self.assertNotIn("Go on from here", out)
        self.refuses(2, "--row 5: data.csv has rows 2 to 4", *words, "--row", 5)

    def test_failures(self):
        """commands: a failure is told in a paragraph: what was tried, why it failed, what to do"""
        def lose(recording):
            target = recording["steps"][2]["target"]
            target["automationId"] = "gone"
            target["levels"][2]["childIndex"] = 7
        self.changed(lose)
        out = self.says(1, "replay", "order.json", *VALUES, desktop=ELSEWHERE)
        self.assertRegex(out, r"  3/11 +paste Street +FAILED: not found")
        self.assertIn(
            "Step 3 \"Street\" (paste): not found (-1) after", out)
        self.assertRegex(out, r"Tried: its tree path: it leads nowhere .*; its AutomationId: .*; its screen point: .*\.")
        self.assertIn("Nothing was touched.", out)
        self.assertIn("Go on from here: the same command with --from 3.", out)
        self.assertNotIn("4/11", out)
        self.assertIn("11/11", self.says(1, "replay", "order.json", *VALUES, "--keep-going", desktop=ELSEWHERE))

        def keep_only_id(recording):
            recording["steps"][2]["target"]["levels"][2]["childIndex"] = 7
        self.changed(keep_only_id)
        self.assertIn("healed", self.says(0, "replay", "order.json", *VALUES, desktop=ELSEWHERE))

        def expect_more(recording):
            recording["steps"][8].update(text="Delivered", timeout=300)
        self.changed(expect_more)
        self.assertIn('What is there: shows "Submitted: Ada Löwe / Brass compass" after 300 ms, not "Delivered".',
                      self.says(1, "replay", "order.json", *VALUES))

    def test_interrupted(self):
        """commands: Escape ends a replay between and within steps; a closed window is told apart from a lost element"""
        self.assertIn("FAILED: cancelled", self.says(5, "replay", "order.json", *VALUES, desktop="escape 5"))
        self.changed(lambda recording: recording["steps"][8].update(text="Delivered", timeout=5000))
        out = self.says(5, "replay", "order.json", *VALUES, desktop="escape 500")
        self.assertIn('Step 9 "Status" (wait): cancelled (-4)', out)
        # Told to end from outside, it ends in the same way, with its report, and leaves no log of its own behind.
        own = self.folder / "own"
        own.mkdir()
        with unittest.mock.patch.dict(os.environ, TMPDIR=str(own)):
            out = self.says(5, "replay", "order.json", *VALUES, "--report", "r.html", desktop="interrupt 500")
        self.assertIn('Step 9 "Status" (wait): cancelled (-4)', out)
        self.assertIn("The program was told to end.", out)
        self.assertIn("</html>", (self.folder / "r.html").read_text(encoding="utf-8"))
        self.assertEqual([], list(own.iterdir()))
        self.assertIn("was closed meanwhile", self.says(4, "replay", "order.json", *VALUES, desktop="close 500"))
        window = 'there is no window "Order form" of order_form.exe (class OrderForm)'
        for command in ("check", "replay"):
            out = self.says(4, command, "order.json", *(VALUES if command == "replay" else ()), "--timeout", 100,
                            desktop="no-form")
            self.assertIn(window if command == "check" else "no window", out)

    def test_capture_and_window(self):
        """commands: capture shows the record and tries it; window names what was clicked"""
        captured = json.loads(self.says(0, "capture", "--at", "308,98", "--json"))
        self.assertEqual("101", captured["target"]["automationId"])
        self.assertEqual("OrderForm", captured["window"]["class"])
        self.assertEqual([("AutomationId", True, True), ("tree path", True, True), ("screen point", True, True)],
                         [(each["by"], each["recorded"], each["found"]) for each in captured["identifications"]])
        table = self.says(0, "capture", "--at", "308,98", "--after", "0.2")
        for row in (r"automationId +101", r"3 +50004 +Edit +1", r"tree path +found, [\d.]+ ms +yes"):
            self.assertRegex(table, row)
        self.assertRegex(table, r"AutomationId +found, [\d.]+ ms +yes, the only one in the window")
        self.assertIn("pathLength", self.says(0, "capture", "--cursor"))
        self.assertRegex(self.says(0, "window", desktop="click 300 100,100"), r"class +OrderForm\n")

    def test_log(self):
        """commands: log sums up steps, failures and searches"""
        self.says(0, "replay", "order.json", *VALUES, "--log", "k.log")
        out = self.says(0, "log", "k.log")
        self.assertRegex(out, r"\d{4}-\d\d-\d\d [\d:.]+ +2 paste Name +ok +\d+ ms\n")
        self.assertRegex(out, r"  \d+ lines, 11 steps, 0 failed, \d+ ms\n")
        self.assertRegex(out, r"targets searched for: [1-9]\d*, clicked from memory \(cache hits\): 0")
        self.changed(lambda recording: recording["steps"][8].update(text="Delivered", timeout=300))
        self.says(1, "replay", "order.json", *VALUES, "--log", "k2.log")
        self.assertIn("steps that ended with -3 (failed): 1", self.says(0, "log", "k2.log"))

    def test_bad_recordings(self):
        """commands: a bad recording is refused in one line with file, step and field, and nothing is done"""
        def step(**fields):
            return lambda recording: recording["steps"][2].update(**fields)
        third = 'order.json: step 3 "Street": field '
        cases = (
            (step(action="dance"), third + '"action" is "dance", which is not known; known are click, double-click, paste, '
             "type, shortcut, wait, check, read"),
            (step(window=2), third + '"window" is 2, but the recording has 1'),
            (step(text=7), third + '"text" is not a text'),
            (step(text=""), third + '"text" is empty'),
            (step(txt="x"), third + '"txt" is not known here'),
            (step(action="wait", match="like"), third + '"match" is "like"; it can be "contains" or "equals"'),
            (step(timeout=-1), third + '"timeout" is -1; it can be 0 to 3600000 ms'),
            (step(timeout=2**31 - 1), third + '"timeout" is 2147483647; it can be 0 to 3600000 ms'),
            (step(keys="Ctrl+S"), third + '"keys" does not belong to the action "paste"'),
            (step(target=[]), 'order.json: step 3 "Street", target: is not an object'),
            (lambda recording: recording["steps"][2].pop("target"), third + '"target" is missing'),
            (lambda recording: recording["steps"][2]["target"].pop("x"),
             'order.json: step 3 "Street", target: field "x" is missing'),
            (lambda recording: recording.update(korvane=2),
             'order.json: field "korvane" is 2: written by a newer version; this one reads up to 1'),
            (lambda recording: recording.update(steps=[]), 'order.json: field "steps" is empty'),
            (lambda recording: recording["windows"][0].update(rect=[1, 2]),
             'order.json: window 1: field "rect" is not a list of 4 whole numbers of 32 bits'),
            (lambda recording: recording["steps"][2]["target"].update(x=2**31 - 1),
             'order.json: step 3 "Street", target: field "x" is 2147483647, which is on no screen'),
        )
        for change, line in cases:
            with self.subTest(line):
                self.changed(change)
                for command in ("check", "replay"):
                    self.refuses(3, line, command, "order.json")

    def test_json_that_is_no_recording(self):
        """commands: what JSON would let pass and no recording has is refused in a moment, with its place"""
        cases = (
            ('{"korvane": 1, "korvane": 1}', 'field "korvane" is there twice'),
            ('{"korvane": 1e999}', 'field "korvane" is 1e999, which no number can hold'),
            ("[" * 100000, "lists and objects lie more than 20 levels deep: that is no recording"),
            ("{" + ",".join(f'"{key}": 1' for key in range(100000)) + "}", "has more than 100 fields: that is no recording"),
        )
        for text, line in cases:
            with self.subTest(line):
                (self.folder / "order.json").write_text(text, encoding="utf-8")
                self.refuses(3, "order.json: " + line, "check", "order.json")

    def test_foreign_text(self):
        """commands: names that a file brings along cannot make the terminal do anything"""
        hostile = "\x1b]0;taken\x07\x1b[2J\u202egnp.exe\x9b31m\nok  1/1"
        self.changed(lambda recording: recording["steps"][0].update(name=hostile))
        for words in (("check", "order.json"), ("replay", "order.json", *VALUES), ("capture", "--at", "100,100")):
            code, out, err = korvane(*words, folder=self.folder)
            self.assertEqual(0, code, err)
            said = (out + err).replace("\n", "")
            self.assertEqual("", "".join(re.findall(r"[\x00-\x1f\x7f-\x9f\u202a-\u202e]", said)))
        self.assertNotIn("\nok  1/1", out)

    def test_outputs(self):
        """commands: no output destroys an input; links are followed, modes kept, new files are for their owner alone"""
        (self.folder / "rows.csv").write_text("NAME,ARTICLE\nAda,Lamp\n", encoding="utf-8")
        (self.folder / "link.html").symlink_to("order.json")
        words = ("replay", "order.json", "--data", "rows.csv")
        for option, name, what in (("--report", "order.json", "the recording itself"),
                                   ("--report", "link.html", "the recording itself"),
                                   ("--log", "./rows.csv", "the data itself"),
                                   ("--proposals", "order.json", "the recording itself")):
            self.refuses(2, f"{option} {name}: is {what}", *words, option, name)
        self.refuses(2, "--proposals r.html: is also the file of --report", *words, "--report", "r.html", "--proposals", "r.html")
        self.assertEqual(recorded(), (self.folder / "order.json").read_text(encoding="utf-8"))
        # What is opened before anything is clicked, and not written, leaves nothing behind.
        self.refuses(6, ".: cannot be written: is a folder", *words, "--report", "r.html", "--proposals", ".")
        self.assertEqual({"order.json", "rows.csv", "link.html"}, {file.name for file in self.folder.iterdir()})

        target = self.folder / "kept.html"
        target.write_text("old")
        target.chmod(0o640)
        (self.folder / "link.html").unlink()
        (self.folder / "link.html").symlink_to("kept.html")
        self.says(0, *words, "--report", "link.html", "--log", "new.log")
        self.assertTrue((self.folder / "link.html").is_symlink())
        self.assertIn("</html>", target.read_text(encoding="utf-8"))
        self.assertEqual([0o640, 0o600], [(self.folder / name).stat().st_mode & 0o777 for name in ("kept.html", "new.log")])
        self.says(0, *words, "--report", "/dev/null")
        self.assertTrue(Path("/dev/null").is_char_device())

    def test_secrets(self):
        """commands: a secret is typed, and stands in no output, report, log or file of results"""
        secret = "Lowe7pass"
        self.changed(lambda recording: [
            recording["steps"][1].update(text="${SECRET_1}", replace=True),
            recording["steps"][10].update(text="not ${SECRET_1}")])
        words = ("replay", "order.json", "--set", "ARTICLE=Lamp", "--report", "r.html", "--log", "k.log", "--junit", "r.xml")
        self.refuses(2, "--set SECRET_1: others can read a command line; give the value in the environment variable of that "
                     "name, or in the data", *words, "--set", f"SECRET_1={secret}")
        with unittest.mock.patch.dict(os.environ, SECRET_1=secret):
            out = self.says(1, *words)
        self.assertIn('shows "*****", not "not *****"', out)
        self.assertNotIn(secret, out)
        with unittest.mock.patch.dict(os.environ, SECRET_1=secret):
            self.assertNotIn(secret, self.says(1, *words, "--json"))
        for name in ("r.html", "r.xml", "k.log"):
            content = (self.folder / name).read_bytes()
            for coded in (secret.encode("utf-8"), secret.encode("latin-1"), b"7pass"):
                self.assertNotIn(coded, content, name)
        self.assertIn(b"*****", (self.folder / "k.log").read_bytes())
        # What the keyboard cannot type is not left out in silence.
        with unittest.mock.patch.dict(os.environ, SECRET_1="Löwe"):
            self.assertIn("the keyboard layout has no keys for a character of the text", self.says(1, *words))

    def answer(self, expected, *words, **options):
        """The JSON that is all of the standard output, and what was told beside it."""
        code, out, err = korvane(*words, "--json", folder=self.folder, **options)
        self.assertEqual(expected, code, out + err)
        answer = json.loads(out)
        self.assertEqual((1, words[0], code), (answer["korvane"], answer["command"], answer["exitCode"]))
        self.assertTrue(out.isascii())
        return answer, err

    def test_json(self):
        """commands: programs get one JSON document, and all that is for people is told beside it"""
        (self.folder / "rows.csv").write_text("NAME,ARTICLE\nAda \x9b,Lamp\nBob,Rope\n", encoding="utf-8")
        answer, err = self.answer(0, "replay", "order.json", "--data", "rows.csv")
        self.assertEqual({"steps": 22, "ok": 22, "healed": 0, "failed": 0, "notRun": 0, "notOnTheFirstTry": 0},
                         answer["totals"])
        self.assertEqual([2, 3], [row["row"] for row in answer["rows"]])
        self.assertIn("22 steps: 22 ok", err)
        first = answer["rows"][0]["steps"][1]
        self.assertEqual((2, "Name", "paste", "ok", 0, "Ada \x9b"),
                         tuple(first[key] for key in ("number", "name", "action", "state", "code", "received")))
        self.changed(lambda recording: recording["steps"][2]["target"].update(automationId="999", pathLength=0, levels=[]))
        answer, err = self.answer(1, "replay", "order.json", *VALUES, "--timeout", 100, "--retries", 1)
        steps = answer["rows"][0]["steps"]
        self.assertEqual((None, 11, ["ok", "ok", "failed"] + ["not run"] * 8),
                         (answer["rows"][0]["row"], len(steps), [step["state"] for step in steps]))
        self.assertIn(steps[2]["explanation"], err)
        self.assertEqual((1, "failed", False), (len(steps[2]["earlier"]), steps[2]["earlier"][0]["state"], steps[2]["inputSent"]))
        answer, _ = self.answer(1, "check", "order.json")
        self.assertEqual(("failed", [("tree path", "not recorded"), ("AutomationId", "not found")]),
                         (answer["steps"][2]["state"],
                          [(each["by"], each["finding"]) for each in answer["steps"][2]["identifications"][:2]]))
        self.assertIn("there is no window", self.answer(4, "check", "order.json", "--timeout", 1, desktop="no-form")[0]["error"])
        self.assertIn("no.json", self.answer(3, "replay", "no.json")[0]["error"])
        self.assertEqual("OrderForm", self.answer(0, "window", desktop="click 300 100,100")[0]["window"]["class"])

    def test_junit(self):
        """commands: test services get a suite for each row and a case for each step, and annotations where they show them"""
        (self.folder / "rows.csv").write_text("NAME,ARTICLE,SEEN\nAda,Lamp,Ada\n<B&b>\x1b,Rope,Bob\n", encoding="utf-8")
        self.changed(lambda recording: recording["steps"][9].update(action="check", text="${SEEN}") or
                     recording["steps"][9].pop("variable", None))
        words = ("replay", "order.json", "--data", "rows.csv", "--junit", "r.xml")
        with unittest.mock.patch.dict(os.environ, GITHUB_ACTIONS="true"):
            out = self.says(1, *words)
        suites = ElementTree.parse(self.folder / "r.xml").getroot()
        self.assertEqual(("22", "1", "0", "1"), tuple(suites.get(key) for key in ("tests", "failures", "errors", "skipped")))
        self.assertEqual(["order.json, row 2", "order.json, row 3"], [suite.get("name") for suite in suites])
        failed, skipped = suites[1][9], suites[1][10]
        self.assertEqual("10 check Confirmation", failed.get("name"))
        self.assertIn("<B&b>\\x1b", failed.find("failure").get("message"))
        self.assertIn("Go on from here", failed.find("failure").text)
        self.assertIsNotNone(skipped.find("skipped"))
        self.assertRegex(out, r'(?m)^::error file=order\.json::row 3: step 10 "Confirmation": Step 10 ')
        self.says(4, *words, "--timeout", 100, desktop="no-form")
        suites = ElementTree.parse(self.folder / "r.xml").getroot()
        self.assertEqual(("0", "1"), (suites.get("failures"), suites.get("errors")))

    def test_data_that_people_have(self):
        """commands: tables of spreadsheets are read as they are; another encoding is told or named with its place"""
        words = ("replay", "order.json", "--data", "data.csv")
        data = self.folder / "data.csv"
        for text in ("sep=;\r\nNAME;ARTICLE\r\nLöwe;Lamp\r\n", "NAME\tnot a variable\tARTICLE\nLöwe\tx\tLamp\n;\n".replace(";\n", ""),
                     "\ufeff\"NAME\",\"ARTICLE\"\nLöwe,Lamp\n,\n"):
            with self.subTest(text):
                data.write_text(text, encoding="utf-8", newline="")
                self.assertIn("Submitted: Löwe / Lamp", self.says(0, *words))
        data.write_bytes("NAME,ARTICLE\nAda,Lamp\nLöwe,Lamp\n".encode("windows-1252"))
        self.refuses(3, "data.csv: line 3, column 2: not UTF-8: save the file as UTF-8, or tell its --encoding", *words)
        self.assertIn("Submitted: Löwe / Lamp", self.says(0, *words, "--encoding", "windows-1252"))
        self.refuses(2, "--encoding klingon: is not known here", *words, "--encoding", "klingon")
        data.write_text("NAME,ARTICLE\nAda,Lamp\nBen\n")
        self.refuses(3, "data.csv: line 3: 1 cells, but 2 names", *words)

    def test_bad_files(self):
        """commands: files that cannot be read or written are named, with the reason"""
        (self.folder / "empty.json").write_bytes(b"")
        (self.folder / "binary.json").write_bytes(b'{"korvane": "\xff"}')
        (self.folder / "rows.csv").write_bytes(b"NAME,NAME\n1,2\n")
        self.refuses(3, "gone.json: cannot be read: No such file or directory", "check", "gone.json")
        self.refuses(3, ".: is a folder, not a file", "check", ".")
        for name in ("empty.json", "binary.json"):
            code, _, err = korvane("check", name, folder=self.folder)
            self.assertEqual((3, 1), (code, err.count("\n")), err)
            self.assertTrue(err.startswith(f"korvane: {name}: not JSON: parse error at "), err)
        self.refuses(3, 'rows.csv: line 1: "NAME" is there twice', "replay", "order.json",
                     "--data", "rows.csv")
        self.refuses(6, "no/r.html: cannot be written: No such file or directory", "replay", "order.json", *VALUES,
                     "--report", "no/r.html")
        self.refuses(6, "no/k.log: cannot be written: No such file or directory", "replay", "order.json", *VALUES, "--log", "no/k.log")
        # A disk that is full in the middle of the file; Python has programs ignore the signal that tells of it.
        full = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (3000, 3000)), "restore_signals": False}
        self.refuses(6, "new.json: cannot be written: File too large", "record", "new.json", "--script", SCRIPT, **full)
        self.refuses(6, "order.json: cannot be written: File too large", "record", "order.json", "--force", "--script",
                     SCRIPT, **full)
        self.assertEqual(recorded(), (self.folder / "order.json").read_text(encoding="utf-8"))
        self.refuses(6, "no/o.json: cannot be written: No such file or directory", "record", "no/o.json", "--script", SCRIPT)

    def test_bad_words(self):
        """commands: a wrong command line answers 2 and does nothing"""
        need = 'order.json: step 2 "Name": field "text": no value for ${NAME}; give one with --set NAME=VALUE, or a column '
        self.refuses(2, need + "NAME in the data", "replay", "order.json")
        self.refuses(2, "--from 12: order.json has 11 steps", "replay", "order.json", *VALUES, "--from", 12)
        self.refuses(2, "--set =1: must be NAME=VALUE, the name of letters, digits, _ and -", "replay", "order.json",
                     "--set", "=1")
        for words in ((), ("dance",), ("replay",), ("capture",), ("capture", "--at", "1"), ("capture", "--at", "1,2,3"),
                      ("capture", "--at", "1,2", "--cursor"), ("replay", "order.json", "--timeout", "0"),
                      ("replay", "order.json", "--from", "x"), ("replay", "order.json", *VALUES, "--row", "1")):
            with self.subTest(words):
                self.says(2, *words)
        self.refuses(7, "record --point needs somebody who points, but the scripted desktop has no mouse to point with; use "
                     "--script", "record", "new.json", "--point")
        self.refuses(7, "nobody sits before the scripted desktop unless KORVANE_DESKTOP says \"user MS ACT\"; use --script",
                     "record", "new.json")

    def test_bad_scripts(self):
        """commands: a script that leads nowhere leaves no recording"""
        script = json.loads(SCRIPT.read_text(encoding="utf-8"))
        place = self.folder / "s.json"

        def written(**fields):
            place.write_text(json.dumps({**script, **fields}), encoding="utf-8")
        written(steps=[{"name": "Out", "action": "click", "at": [5000, 5000]}])
        self.refuses(1, 's.json: step 1 "Out": field "at": there is no window at 5040,5040', "record", "new.json",
                     "--script", "s.json")
        written(window={"title": "Nobody"})
        self.refuses(4, 's.json: field "window": there is no window "Nobody"', "record", "new.json", "--script", "s.json")
        written(steps=[{"name": "Keys", "action": "shortcut", "keys": "Ctrl+Alt+Oops"}])
        code, _, err = korvane("record", "new.json", "--script", "s.json", folder=self.folder)
        self.assertEqual(3, code)
        self.assertIn('s.json: step 1 "Keys": field "keys" is "Ctrl+Alt+Oops", which is not known; known are ', err)

    def test_documents(self):
        """commands: the samples and exit codes that the documents give are those of the program"""
        page = (ROOT / "docs/host.md").read_text(encoding="utf-8")
        recording, script = re.findall(r"^```json\n(.*?)^```", page, re.M | re.S)
        (self.folder / "order.json").write_text(recording, encoding="utf-8")
        (self.folder / "script.json").write_text(script, encoding="utf-8")
        self.says(0, "replay", "order.json", *VALUES, desktop=ELSEWHERE)
        self.says(0, "record", "new.json", "--script", "script.json", desktop=ELSEWHERE)
        self.says(0, "replay", "new.json", *VALUES)
        told = re.findall(r"^  (\d)  (.*)$", self.says(0, "--help"), re.M)
        self.assertEqual(told, re.findall(r"^\| (\d) \| (.*) \|$", page, re.M))
        for command in ("capture", "edit", "export", "record", "replay"):
            for option in re.findall(r"--[a-z-]+", self.says(0, command, "--help")):
                self.assertTrue(option == "--help" or option in page, option)


if __name__ == "__main__":
    unittest.main()
