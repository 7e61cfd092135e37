"""What is asked of the system itself: windows by name, and the user's double click."""

from __future__ import annotations

import ctypes
import sys
from ctypes import c_void_p
from typing import Any, List, Optional, Pattern, Union

from ._library import library, units
from .functions import get_window_info


def _system() -> Any:
    if sys.platform == "win32":
        return ctypes.WinDLL("user32")
    # What stands in for the library answers.
    return library


_SYSTEM = _system()
_SYSTEM.FindWindowExW.restype = c_void_p
_SYSTEM.FindWindowExW.argtypes = [c_void_p, c_void_p, c_void_p, c_void_p]
_USUAL_DOUBLE_CLICK_MS = 500


def _is_visible(window: int) -> bool:
    return sys.platform != "win32" or bool(_SYSTEM.IsWindowVisible(c_void_p(window)))


def _matches(wanted: Union[str, Pattern[str], None], text: str) -> bool:
    if wanted is None or isinstance(wanted, str):
        return wanted is None or wanted == text
    return wanted.search(text) is not None


def find_windows(
    title: Union[str, Pattern[str], None], class_name: Optional[str], process: Optional[str]
) -> List[int]:
    """The visible top-level windows that have the title, the class and the process that are given, frontmost first."""
    found = []
    window: Optional[int] = _SYSTEM.FindWindowExW(None, None, units(class_name), None)
    while window:
        info = get_window_info(window)
        same_process = process is None or process.lower() == info.process_name.lower()
        if _is_visible(window) and same_process and _matches(title, info.title):
            found.append(window)
        window = _SYSTEM.FindWindowExW(None, window, units(class_name), None)
    return found


def double_click_ms() -> int:
    """Within so many milliseconds two clicks at one place are a double click."""
    return int(_SYSTEM.GetDoubleClickTime()) if sys.platform == "win32" else _USUAL_DOUBLE_CLICK_MS
