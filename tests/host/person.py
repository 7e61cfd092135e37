"""Somebody at mouse and keyboard of the desktop that Wine's programs are on, who is real to them."""

import contextlib
import subprocess
import time

from Xlib import display


class Person:
    @staticmethod
    def _do(*words):
        subprocess.run(["xdotool", *map(str, words)], check=True, timeout=60)

    def point(self, x, y):
        self._do("mousemove", x, y)
        # Programs learn of it before they are clicked.
        time.sleep(0.1)

    def click(self, x, y, times=1):
        self.point(x, y)
        self._do("click", "--repeat", times, "--delay", 60, 1)
        time.sleep(0.4)

    def drag(self, x, y, to_x, to_y):
        self.point(x, y)
        self._do("mousedown", 1)
        self.point((x + to_x) // 2, (y + to_y) // 2)
        self.point(to_x, to_y)
        self._do("mouseup", 1)
        time.sleep(0.2)

    def type(self, text, delay=15):
        self._do("type", "--delay", delay, text)
        time.sleep(0.2)

    def press(self, *keys):
        for key in keys:
            self._do("key", key)
            time.sleep(0.3)


@contextlib.contextmanager
def person():
    """The mouse is real as long as somebody is there: what keeps it out of the windows is taken away."""
    server = display.Display()
    [shield] = [window for window in server.screen().root.query_tree().children if window.get_wm_name() == "pointer shield"]
    shield.unmap()
    server.sync()
    try:
        yield Person()
    finally:
        shield.map()
        server.sync()
        server.close()
