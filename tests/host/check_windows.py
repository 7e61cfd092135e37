"""The program on real windows, under Wine: recorded from a script and by pointing, replayed after a restart."""

import base64
import concurrent.futures
import contextlib
import json
import os
import pty
import re
import select
import subprocess
import sys
import time
import unittest

import replays
from program import CONFIRMATION, SCRIPT, VALUES, WINDOWS, scratch
from repository import ROOT, run_windows
from Xlib import display

sys.path.append(str(ROOT / "tests/real"))

from programs import await_window  # noqa: E402

KORVANE = WINDOWS / "korvane.exe"


@contextlib.contextmanager
def form(place):
    """The order form at a place, as long as it is needed."""
    program = subprocess.Popen(["wine", WINDOWS / "order_form.exe", "--at", place], stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        yield
    finally:
        program.terminate()
        program.wait()


class Terminal:
    """Somebody at a terminal, who waits for each question."""

    def __init__(self, *command, folder):
        self.child, self.handle = pty.fork()
        if self.child == 0:
            os.chdir(folder)
            os.execvp(command[0], command)
        self.seen = self.before = ""

    def read_until(self, words, seconds=60):
        end = time.monotonic() + seconds
        while words not in self.seen:
            ready, _, _ = select.select([self.handle], [], [], max(0, end - time.monotonic()))
            if not ready:
                raise AssertionError(f"no {words!r} in {self.seen!r}")
            data = os.read(self.handle, 4096).decode("utf-8", "replace")
            self.seen += re.sub(r"\x1b\[[?\d;]*[A-Za-z]", "", data)
        self.before, _, self.seen = self.seen.partition(words)

    def press(self, keys):
        os.write(self.handle, keys.encode())

    def wait(self):
        with contextlib.suppress(OSError):
            while os.read(self.handle, 4096):
                pass
        os.close(self.handle)
        return os.waitstatus_to_exitcode(os.waitpid(self.child, 0)[1])


class Windows(unittest.TestCase):
    def runs(self, expected, *words, folder):
        code, out = run_windows(KORVANE, *words, folder=folder)
        self.assertEqual(expected, code, out)
        return out

    def test_restart(self):
        """Windows: a recording is found again after a restart elsewhere, replayed, and reported with pictures"""
        folder = scratch("windows")
        with form("40,40"):
            self.runs(0, "record", "order.json", "--script", "Z:" + str(SCRIPT), folder=folder)
            self.assertIn("101", self.runs(0, "capture", "--at", "308,98", folder=folder))
        with form("420,200"):
            rows = self.runs(0, "check", "order.json", folder=folder).splitlines()
            self.assertRegex(rows[1], r"AutomationId, [\d.]+ ms +found, .* +found, .* +found, ")
            out = self.runs(0, "replay", "order.json", *VALUES, "--log", "k.log", "--report", "r.html", folder=folder)
            self.assertIn(CONFIRMATION, out)
            self.assertIn("  11 steps: 11 ok, 0 healed, 0 failed, 0 not run, in ", out)
        blocks = replays.blocks(folder / "r.html")
        pictures = [block["step"]["before"] for block in blocks if "step" in block]
        self.assertEqual(11, len([picture for picture in pictures if "mark" in picture]))
        kept = []
        for picture in [block["picture"] for block in blocks if "picture" in block]:
            kind, _, content = picture.partition(",")
            kept.append(base64.b64decode(content))
            self.assertEqual(("data:image/png;base64", b"\x89PNG"), (kind, kept[-1][:4]))
        # A screen that is black would be a few hundred bytes.
        self.assertGreater(len(kept[pictures[0]["index"]]), 3000)
        # A step changes a field, and only that is kept of its picture.
        patches = [picture["patch"] for picture in pictures if "patch" in picture]
        self.assertGreater(len(patches), 4)
        for patch in patches:
            self.assertLess(patch["top"] + patch["height"], 100)
            self.assertLess(len(kept[patch["index"]]), len(kept[0]))
        self.assertIn("11 steps, 0 failed", self.runs(0, "log", "k.log", folder=folder))
        self.assertIn("there is no window \"Order form\"", self.runs(4, "check", "order.json", "--timeout", "200", folder=folder))

    def test_disturbed(self):
        """Windows: nothing is clicked through a window in front, and a window that moves in between is found where it is"""
        folder = scratch("disturbed")
        with form("40,40"):
            self.runs(0, "record", "order.json", "--script", "Z:" + str(SCRIPT), folder=folder)
            cover = subprocess.Popen(["wine", WINDOWS / "order_helper.exe", "cover", "40", "40", "500", "460"],
                                     stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(2)
            out = self.runs(1, "replay", "order.json", *VALUES, "--timeout", "500", folder=folder)
            self.assertIn("another window covers it and does not make way", out)
            self.assertIn("11 steps: 0 ok, 0 healed, 1 failed, 10 not run", out)
            cover.terminate()
            cover.wait()
            steps = {step["name"]: step for step in json.loads((folder / "order.json").read_text(encoding="utf-8"))["steps"]}
            status = steps["Status"]
            recording = json.loads((folder / "order.json").read_text(encoding="utf-8"))
            status.update(text="Go", timeout=20000)
            # The same field twice: its place of the first time is not the one of the second.
            recording["steps"] = [steps["Name"], status, {**steps["Name"], "replace": True}, steps["Name again"]]
            (folder / "moved.json").write_text(json.dumps(recording), encoding="utf-8")
            with concurrent.futures.ThreadPoolExecutor() as pool:
                replay = pool.submit(run_windows, KORVANE, "replay", "moved.json", *VALUES, folder=folder)
                time.sleep(3)
                screen = display.Display()
                await_window(screen, "Order form").configure(x=500, y=220)
                screen.close()
                time.sleep(0.5)
                subprocess.run(["wine", WINDOWS / "order_helper.exe", "set-text", "0",
                                str(int(status["target"]["hwnd"], 16)), "Go"], check=True, stdin=subprocess.DEVNULL)
                code, out = replay.result()
            self.assertEqual(0, code, out)
            self.assertIn("4 steps: 4 ok, 0 healed, 0 failed, 0 not run", out)

    def test_terminal(self):
        """Windows: a secret is asked for unseen; Ctrl+C ends a replay, whose report is written"""
        folder = scratch("terminal")
        with form("40,40"):
            self.runs(0, "record", "order.json", "--script", "Z:" + str(SCRIPT), folder=folder)
            recording = json.loads((folder / "order.json").read_text(encoding="utf-8"))
            steps = {step["name"]: step for step in recording["steps"]}
            steps["Status"].update(text="never", timeout=60000)
            recording["steps"] = [{**steps["Name"], "text": "${SECRET_1}", "replace": True}, steps["Status"]]
            (folder / "secret.json").write_text(json.dumps(recording), encoding="utf-8")
            user = Terminal("wine", KORVANE, "replay", "secret.json", "--report", "r.html", folder=folder)
            user.read_until("shown):")
            # Until the console under Wine reads keys, the terminal itself echoes them.
            time.sleep(1)
            user.press("Lowe7pass\r")
            user.read_until("Status")
            self.assertNotIn("Lowe", user.before)
            # Nothing that was done is lost, however the program ends.
            self.assertEqual([1], [block["step"]["number"] for block in replays.blocks(folder / "r.html") if "step" in block])
            user.press("\x03")
            self.assertEqual(5, user.wait())
        self.assertIn("The program was told to end", (folder / "r.html").read_text(encoding="utf-8"))

    def test_pointing(self):
        """Windows: steps are recorded by pointing and pressing keys in the terminal"""
        folder = scratch("pointing")
        with form("40,40"):
            self.runs(0, "capture", "--at", "308,98", "--after", "1", folder=folder)
            run_windows(WINDOWS / "order_helper.exe", "click", "0", "308", "98", folder=folder)
            user = Terminal("wine", KORVANE, "record", "pointed.json", "--point", folder=folder)
            user.read_until("q write the file and end")
            for key, question, answer in (("p", "text:", "Ada Löwe"), ("c", None, None), ("k", "keys:", "Ctrl+A")):
                user.press(key)
                if question:
                    user.read_until(question)
                    user.press(answer + "\r")
                user.read_until("name of the step:")
                user.press(f"Step {key}\r")
                user.read_until(f"Step {key}")
            user.press("u")
            user.read_until("taken back; 2 left")
            user.press("q")
            self.assertEqual(0, user.wait())
        steps = json.loads((folder / "pointed.json").read_text(encoding="utf-8"))["steps"]
        self.assertEqual([("Step p", "paste", "Ada Löwe", "101"), ("Step c", "click", None, "101")],
                         [(step["name"], step["action"], step.get("text"), step["target"]["automationId"]) for step in steps])


if __name__ == "__main__":
    unittest.main()
