"""The order form to automate: stage.dll of the package, or what KORVANE_STAGE names. Hosts do not need it."""

import ctypes
import os
from ctypes import byref, c_int32, c_void_p
from pathlib import Path

NAME, ARTICLE, NOTE, SUBMIT, STATUS = 101, 201, 202, 301, 401

_library = ctypes.CDLL(
    os.environ.get("KORVANE_STAGE") or str(Path(__file__).resolve().parents[1] / "stage" / "stage.dll")
)
_library.stageFormWindow.restype = c_void_p


def open_form(x, y):
    if _library.stageOpenForm(x, y) != 0:
        raise RuntimeError("the order form does not come up")
    return _library.stageFormWindow()


def close_form():
    _library.stageCloseForm()


def centre_of(control):
    x, y = c_int32(), c_int32()
    if _library.stageCentreOf(control, byref(x), byref(y)) != 0:
        raise LookupError(f"no control {control}")
    return x.value, y.value
