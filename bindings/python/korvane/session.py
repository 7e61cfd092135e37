"""Sessions, windows and targets. Times are seconds."""

from __future__ import annotations

import json
import os
import time
from types import TracebackType
from typing import Optional, Pattern, Tuple, Type, Union

from . import functions
from .codes import Code, Error, Method, error_of
from .records import TargetRecord
from .windows import double_click_ms, find_windows

_POLL = 0.05


def _milliseconds(seconds: float) -> int:
    # 0 would mean the library's own time-out.
    return max(1, round(seconds * 1000))


class Session:
    """From the opening of the log to the clean-up, on one thread: `with korvane.Session("korvane.log") as session:`.

    Without a path the log is in the user's local application data folder.
    """

    def __init__(self, log: Union[str, os.PathLike[str], None] = None) -> None:
        self._log = log
        self._last_click: Optional[Tuple[int, bytes, float]] = None

    def __enter__(self) -> Session:
        functions.initialize_log(None if self._log is None else os.fspath(self._log))
        try:
            functions.initialize_automation()
        except Error:
            functions.cleanup_automation()
            raise
        return self

    def __exit__(
        self, kind: Optional[Type[BaseException]], error: Optional[BaseException], trace: Optional[TracebackType]
    ) -> None:
        functions.cleanup_automation()

    def window(
        self,
        title: Union[str, Pattern[str], None] = None,
        class_name: Optional[str] = None,
        process: Optional[str] = None,
        timeout: float = 5.0,
    ) -> Window:
        """The only visible top-level window with the title (a str or a compiled pattern), class and process.

        It is waited for. NotFoundError: there is none in time. InvalidArgumentError: there are several.
        """
        wanted = ", ".join(
            f"{name} {value!r}" for name, value in (("title", title), ("class", class_name), ("process", process)) if value
        )
        if not wanted:
            raise ValueError("korvane: a title, a class_name or a process is needed")
        end = time.monotonic() + timeout
        while True:
            found = find_windows(title, class_name, process)
            if len(found) == 1:
                return Window(self, found[0])
            if found:
                raise error_of("window", Code.INVALID_ARGUMENT, f"{len(found)} windows with {wanted}")
            if time.monotonic() >= end:
                raise error_of("window", Code.NOT_FOUND, f"no window with {wanted} within {timeout} s")
            time.sleep(_POLL)

    def window_of(self, handle: int) -> Window:
        """The window of a handle."""
        return Window(self, handle)

    def pick_window(self) -> Optional[Window]:
        """The window that the user clicks next; None when the mouse cannot be watched."""
        handle = functions.find_window_by_click()
        return None if handle is None else Window(self, handle)

    def target_of_step(
        self, file: Union[str, os.PathLike[str]], step: Union[str, int], timeout: float = 5.0
    ) -> Target:
        """The target of a step, by its name or its number from 1, in a recording of the companion program."""
        with open(file, encoding="utf-8") as opened:
            recording = json.load(opened)
        steps = recording["steps"]
        found = [each for i, each in enumerate(steps, 1) if step == (i if isinstance(step, int) else each["name"])]
        if not found or "target" not in found[0]:
            raise ValueError(f"korvane: {os.fspath(file)} has no step {step!r} with a target")
        named = recording["windows"][found[0].get("window", 1) - 1]
        window = self.window(named.get("title") or None, named.get("class") or None, named.get("process") or None, timeout)
        return window.target(TargetRecord.from_recording(found[0]["target"]))

    def _separate_click(self, window: int, record: TargetRecord) -> None:
        """Before a click: makes sure that it is not the second half of a double click on the same target."""
        if self._last_click is not None and self._last_click[:2] == (window, bytes(record)):
            left = double_click_ms() + 1 - (time.monotonic() - self._last_click[2]) * 1000
            if left > 0:
                functions.delay(round(left) + 1)
        # A remembered point may lie beside a window that has moved.
        functions.clear_element_cache()

    def _clicked(self, window: int, record: TargetRecord) -> None:
        self._last_click = (window, bytes(record), time.monotonic())


class Window:
    """A top-level window of another program."""

    def __init__(self, session: Session, handle: int) -> None:
        self.session = session
        self.handle = handle

    @property
    def title(self) -> str:
        """As it is now."""
        return functions.get_window_info(self.handle).title

    @property
    def process(self) -> str:
        """The file name of its process."""
        return functions.get_window_info(self.handle).process_name

    def focus(self) -> None:
        """Brings it to the foreground."""
        functions.ensure_window_focus(self.handle)

    def target_at(self, x: int, y: int) -> Target:
        """The element at a point of the screen, in pixels."""
        record = functions.capture_target_at_point(x, y)
        # The strongest identification that the element has. A path with a level that may be several elements is none.
        levels = record.path
        if record.automation_id:
            record.identification_method = Method.AUTOMATION_ID
        elif levels and all(level.control_type > 0 and level.child_index > 0 for level in levels):
            record.identification_method = Method.TREE_PATH
        return Target(self, record)

    def target_at_cursor(self) -> Target:
        """The element under the mouse."""
        return Target(self, functions.capture_target_at_cursor())

    def target(self, record: TargetRecord) -> Target:
        """The element of a record that was kept."""
        return Target(self, record)

    def __repr__(self) -> str:
        return f"<Window {self.handle} {self.title!r}>"


class Target:
    """An element in a window, found anew for each call."""

    def __init__(self, window: Window, record: TargetRecord) -> None:
        self.window = window
        self.record = record

    def click(self) -> None:
        """Clicks it. Two calls are two clicks, never a double click."""
        session, handle = self.window.session, self.window.handle
        session._separate_click(handle, self.record)
        try:
            functions.click_target(self.record, handle)
        finally:
            session._clicked(handle, self.record)

    def paste(self, text: str, timeout: float = 3.0) -> None:
        """Puts the text on the clipboard, clicks, pastes, and waits until it shows. FailedError: not in time."""
        session, handle = self.window.session, self.window.handle
        functions.set_clipboard_text(text)
        session._separate_click(handle, self.record)
        try:
            functions.paste_to_target_with_verify_ex(self.record, handle, _milliseconds(timeout))
        finally:
            session._clicked(handle, self.record)

    def type(self, text: str, pause: float = 0.001) -> None:
        """Clicks it and types the text key by key."""
        self.click()
        functions.send_key_sequence(text, _milliseconds(pause))

    def text(self) -> Optional[str]:
        """What it shows; None when no text can be read."""
        return functions.get_target_text(self.record, self.window.handle)

    def wait(self, text: str, timeout: float = 3.0, exact: bool = False) -> None:
        """Waits until it shows the text, or with `exact` nothing else. FailedError: time ran out."""
        wait = functions.wait_for_target_contains_text if exact else functions.wait_for_target_contains_partial_text
        wait(self.record, self.window.handle, text, _milliseconds(timeout))

    def check(self, text: str, exact: bool = False) -> bool:
        """Whether it shows the text, or with `exact` nothing else."""
        contains = functions.target_contains_text if exact else functions.target_contains_partial_text
        return contains(self.record, self.window.handle, text)

    def __repr__(self) -> str:
        return f"<Target {self.record!r} in {self.window!r}>"


class CancelMonitor:
    """Watches the Escape key within a `with` block: what runs there can end with a CancelledError."""

    def __enter__(self) -> CancelMonitor:
        functions.start_cancel_monitor()
        return self

    def __exit__(
        self, kind: Optional[Type[BaseException]], error: Optional[BaseException], trace: Optional[TracebackType]
    ) -> None:
        functions.stop_cancel_monitor()
