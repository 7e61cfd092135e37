"""The library itself, and how values go into it and come out."""

from __future__ import annotations

import ctypes
import os
import sys
from ctypes import c_char_p, c_uint16, c_void_p
from pathlib import Path
from typing import Any, Optional

from .codes import Code, error_of, open_log
from .records import TargetRecord, WindowInfo

__all__ = [
    "answer_of", "check", "declare", "handle", "info_of", "library", "open_log", "owned_text", "record_of", "units", "utf8",
]


def _find_library() -> str:
    named = os.environ.get("KORVANE_LIBRARY")
    if named:
        # A whole path always: a bare name would be looked for in the current folder, too.
        return os.path.abspath(named)
    if sys.platform != "win32":
        raise ImportError("korvane is for 64-bit Windows; elsewhere KORVANE_LIBRARY can name what stands in for it")
    here = Path(__file__).resolve().parent
    for folder in (here, here.parents[2] / "bin"):
        if (folder / "korvane.dll").is_file():
            return str(folder / "korvane.dll")
    raise ImportError("korvane.dll is neither in the package nor in bin/ of the unpacked zip; KORVANE_LIBRARY can name it")


def _load() -> Any:
    if sys.maxsize < 2**32:
        raise ImportError("korvane needs a 64-bit Python")
    if sys.platform != "win32":
        return ctypes.CDLL(_find_library())
    # What it needs in turn: from its own folder and the system's, never from the current one.
    search_dll_load_dir, search_system32 = 0x100, 0x800
    return ctypes.CDLL(_find_library(), winmode=search_dll_load_dir | search_system32)


library = _load()


def declare(name: str, result: Any, parameters: Any) -> None:
    function = getattr(library, name)
    function.restype, function.argtypes = result, parameters


# ---- Arguments: each takes one kind of value and no other ----


def units(text: Optional[str]) -> Any:
    """UTF-16 with a terminator."""
    if text is None:
        return None
    if not isinstance(text, (str, os.PathLike)):
        raise TypeError("korvane: a str is needed")
    text = os.fspath(text)
    if "\0" in text:
        raise ValueError("korvane: a NUL inside a text")
    data = text.encode("utf-16-le", "surrogatepass") + b"\0\0"
    return (c_uint16 * (len(data) // 2)).from_buffer_copy(data)


def utf8(html: Optional[str]) -> Any:
    """UTF-8 with a terminator."""
    if html is not None and "\0" in html:
        raise ValueError("korvane: a NUL inside the HTML")
    return None if html is None else c_char_p(html.encode("utf-8"))


def handle(window: Optional[int]) -> Any:
    # ctypes itself would take a text or an array for the address of a window.
    if window is not None and not isinstance(window, int):
        raise TypeError("korvane: a window is an int")
    return c_void_p(window)


def record_of(record: Optional[TargetRecord]) -> Any:
    if record is not None and not isinstance(record, TargetRecord):
        raise TypeError("korvane: a TargetRecord is needed")
    return None if record is None else ctypes.byref(record._as_parameter_)


def info_of(info: WindowInfo) -> Any:
    return ctypes.byref(info._as_parameter_)


# ---- Results ----


def check(function: str, code: int) -> None:
    if code != Code.OK:
        raise error_of(function, code)


def answer_of(function: str, answer: int, found: int = 1, not_found: int = 0) -> bool:
    if answer not in (found, not_found):
        raise error_of(function, answer)
    return answer == found


def owned_text(address: Optional[int]) -> Optional[str]:
    """A text that the library hands out, given back to it."""
    if not address:
        return None
    try:
        length = 0
        while c_uint16.from_address(address + 2 * length).value:
            length += 1
        return ctypes.string_at(address, 2 * length).decode("utf-16-le", "surrogatepass")
    finally:
        library.freeTextResult(c_void_p(address))
