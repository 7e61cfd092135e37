"""Programs that nobody here wrote, used by somebody with mouse and keyboard who is recorded: the recording does the same."""

import contextlib
import json
import time
import unittest

from check_windows import KORVANE, Terminal
from check_wizard import make_wizard
from person import person
from programs import HERE, await_window, program_at, replay, scratch, window_titled, windows_path
from repository import run_windows
from Xlib import display


@contextlib.contextmanager
def recorder(folder):
    """Records what is done meanwhile into new.json of the folder."""
    terminal = Terminal("wine", KORVANE, "record", "new.json", "--force", folder=folder)
    terminal.read_until("ends; so does Ctrl+C here")
    yield
    terminal.press("\x03")
    code = terminal.wait()
    if code != 0:
        raise AssertionError(f"{code}: {terminal.seen}")


def work(user, recording, steps, values):
    """The person does what the first steps of a recording say, at the places where these windows are now."""
    screen = display.Display()
    for step in recording["steps"][:steps]:
        window = recording["windows"][step["window"] - 1]
        title = window["title"]
        shown = window_titled(screen, title) or await_window(screen, title)
        place = screen.screen().root.translate_coords(shown, 0, 0)
        if step["action"] in ("wait", "check"):
            time.sleep(0.5)
            continue
        if "target" in step:
            user.click(*(step["target"][axis] - window["rect"][i] + at for i, (axis, at) in enumerate((("x", place.x), ("y", place.y)))))
        if step["action"] == "paste":
            user.type(values.get(step["text"], step["text"]))
        if step["action"] == "shortcut":
            user.press(step["keys"].replace("Ctrl+A", "ctrl+a"))
    screen.close()
    time.sleep(0.5)


def await_text(file, text):
    """What a program is told last it does in its own time, which ends when it is closed."""
    end = time.monotonic() + 10
    while not file.exists() or file.read_text(encoding="utf-8") != text:
        if time.monotonic() > end:
            raise AssertionError(f"{file} does not hold {text!r}")
        time.sleep(0.1)


class Recorded(unittest.TestCase):
    def done_again(self, folder):
        code, out = replay(folder / "new.json")
        self.assertEqual(0, code, out)

    def test_notepad(self):
        """notepad: a text typed and saved through menu and file dialog by somebody who is recorded, then by the recording"""
        folder = scratch("recorded-notepad")
        run_windows(KORVANE, "--version", folder=folder)
        recording = json.loads((HERE / "notepad.json").read_text(encoding="utf-8"))
        file = folder / "saved.txt"
        for again in (False, True):
            with program_at("Untitled - Notepad", *((260, 180) if again else (120, 60)), "notepad"):
                if again:
                    self.done_again(folder)
                else:
                    with person() as user, recorder(folder):
                        work(user, recording, 8, {"${FILE}": windows_path(file)})
                await_text(file, "One line, saved and opened again.")
            file.unlink()

    def test_wizard(self):
        """installer: its pages gone through by somebody who is recorded, then by the recording: what was chosen is installed"""
        folder = scratch("recorded-wizard")
        run_windows(KORVANE, "--version", folder=folder)
        recording = json.loads((HERE / "wizard.json").read_text(encoding="utf-8"))
        make_wizard(folder)
        target = folder / "installed"
        for again in (False, True):
            with program_at("Sample Setup ", *((220, 160) if again else (140, 120)), folder / "wizard.exe"):
                if again:
                    self.done_again(folder)
                else:
                    with person() as user, recorder(folder):
                        work(user, recording, len(recording["steps"]), {"${FOLDER}": windows_path(target)})
            self.assertEqual(["help.txt", "note.txt", "program.txt"], sorted(file.name for file in target.iterdir()), again)
            for file in target.iterdir():
                file.unlink()


if __name__ == "__main__":
    unittest.main()
