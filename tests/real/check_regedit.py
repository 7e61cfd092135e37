"""The registry editor of Wine: a recording made at one place deletes the right value at another, after a restart."""

import contextlib
import subprocess
import sys
import time
import unittest
from pathlib import Path

from Xlib import display

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "host"))

from program import WINDOWS, scratch  # noqa: E402
from repository import run_windows  # noqa: E402

VALUES = ("First", "Second", "Third")


def reg(*words):
    return subprocess.run(["wine", "reg", *words], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, check=False, timeout=60).returncode


def window_titled(screen, title):
    clients = screen.screen().root.get_full_property(screen.intern_atom("_NET_CLIENT_LIST"), 0)
    for number in clients.value if clients else ():
        window = screen.create_resource_object("window", number)
        if window.get_wm_name() == title:
            return window
    return None


def await_window(screen, title):
    end = time.monotonic() + 30
    while time.monotonic() < end:
        if window := window_titled(screen, title):
            return window
        time.sleep(0.1)
    raise AssertionError(f"no window {title!r}")


@contextlib.contextmanager
def registry_editor(x, y):
    program = subprocess.Popen(["wine", "regedit"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    screen = display.Display()
    try:
        window = await_window(screen, "Registry Editor")
        window.configure(x=x, y=y)
        screen.sync()
        time.sleep(1)
        place = screen.screen().root.translate_coords(window, 0, 0)
        # The window manager's frame lies between.
        if abs(place.x - x) > 40 or abs(place.y - y) > 40:
            raise AssertionError(f"the window is at {place.x},{place.y} instead of {x},{y}")
        yield
    finally:
        screen.close()
        program.terminate()
        program.wait()


class RegistryEditor(unittest.TestCase):
    def setUp(self):
        for value in VALUES:
            self.assertEqual(0, reg("add", "HKCU", "/v", value, "/d", value, "/f"))

    def tearDown(self):
        for value in VALUES:
            reg("delete", "HKCU", "/v", value, "/f")

    def test_value_deleted(self):
        """regedit: a tree item and a row of a list, found again elsewhere: the value that was meant is deleted"""
        with registry_editor(240, 160):
            code, out = run_windows(WINDOWS / "korvane.exe", "replay", "Z:" + str(HERE / "regedit.json"),
                                    folder=scratch("regedit"))
            self.assertEqual(0, code, out)
            time.sleep(0.5)
        there = [value for value in VALUES if reg("query", "HKCU", "/v", value) == 0]
        self.assertEqual(["First", "Third"], there)


if __name__ == "__main__":
    unittest.main()
