"""What the tests on programs of Wine share: their windows at a place, a recording replayed, the registry."""

import contextlib
import subprocess
import sys
import time
from pathlib import Path

from Xlib import display

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "host"))

from program import WINDOWS, scratch  # noqa: E402
from repository import run_windows  # noqa: E402


def reg(*words):
    """Exit code of Wine's registry tool."""
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


def await_window_gone(title):
    screen = display.Display()
    try:
        end = time.monotonic() + 10
        while window_titled(screen, title):
            if time.monotonic() > end:
                raise AssertionError(f"the window {title!r} stays")
            time.sleep(0.1)
    finally:
        screen.close()


@contextlib.contextmanager
def program_at(title, x, y, *command):
    """A program under Wine with its window at a place, as long as it is needed."""
    program = subprocess.Popen(["wine", *command], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    screen = display.Display()
    try:
        window = await_window(screen, title)
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


def windows_path(file):
    return "Z:" + str(file).replace("/", "\\")


def replay(recording, **variables):
    """Exit code and what was said."""
    values = [word for name, value in variables.items() for word in ("--set", f"{name}={value}")]
    return run_windows(WINDOWS / "korvane.exe", "replay", "Z:" + str(HERE / recording), *values, folder=scratch("real"))
