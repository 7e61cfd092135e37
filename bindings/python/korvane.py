"""korvane for Python 3.8 and later, with nothing but the standard library.

    import korvane

    with korvane.Session("korvane.log"):
        form = korvane.find_window_by_click()  # the user clicks the form
        note = korvane.capture_target_at_point(320, 240)
        note.identificationMethod = korvane.Method.TREE_PATH
        korvane.set_clipboard_text("Brass compass")
        korvane.paste_to_target_with_verify_ex(note, form, 1000)

Every function of korvane.h is here in lower case with underscores. What answers a result code there returns nothing here
and raises `Error` with the `Code` unless it is OK; what answers yes or no returns a bool. Windows are integers. Texts
are str; lone surrogates pass in both directions, and a text with a NUL, which would be cut off there, is a ValueError.

The library is the file that KORVANE_LIBRARY names, else korvane.dll beside this file or in the unpacked package.
"""

import ctypes
import enum
import os
import sys
from ctypes import POINTER, c_char_p, c_int, c_int32, c_int64, c_uint16, c_void_p
from pathlib import Path


class Code(enum.IntEnum):
    OK = 0
    NOT_FOUND = -1
    INVALID_ARGUMENT = -2
    FAILED = -3
    CANCELLED = -4


class Method(enum.IntEnum):
    UNDECIDED = -1
    AUTOMATION_ID = 0
    COORDINATES = 2
    TREE_PATH = 3


KEY_CTRL_A = 9999


class Error(Exception):
    """A function answered a code other than OK."""

    def __init__(self, function, code):
        self.function = function
        self.code = Code(code) if code in Code._value2member_map_ else code
        super().__init__(f"{function}: {getattr(self.code, 'name', self.code)}")


# ---- Texts ----


def _units(text):
    if text is None:
        return None
    if "\0" in text:
        raise ValueError("korvane: a NUL inside a text")
    data = text.encode("utf-16-le", "surrogatepass") + b"\0\0"
    return (c_uint16 * (len(data) // 2)).from_buffer_copy(data)


def _text(units):
    """Up to the first zero unit of an array."""
    data = bytes(units)
    end = next((i for i in range(0, len(data), 2) if data[i : i + 2] == b"\0\0"), len(data))
    return data[:end].decode("utf-16-le", "surrogatepass")


# ---- Records ----


class TargetRecord(ctypes.Structure):
    """A captured element. `bytes(record)` is what a host stores, `TargetRecord.from_buffer_copy(data)` reads it again."""

    _fields_ = [
        ("automationId", c_uint16 * 256),
        ("hwnd", c_void_p),
        ("x", c_int32),
        ("y", c_int32),
        ("identificationMethod", c_int32),
        ("pathLength", c_int32),
        ("controlTypes", c_int32 * 20),
        ("classNames", (c_uint16 * 64) * 20),
        ("childIndices", c_int32 * 20),
    ]

    @property
    def automation_id(self):
        return _text(self.automationId)

    @property
    def class_names(self):
        return [_text(name) for name in self.classNames]


class WindowInfo(ctypes.Structure):
    _fields_ = [("titleUnits", c_uint16 * 256), ("processNameUnits", c_uint16 * 256), ("window", c_void_p)]

    @property
    def title(self):
        return _text(self.titleUnits)

    @property
    def process_name(self):
        return _text(self.processNameUnits)


# ---- The library ----


def _find_library():
    named = os.environ.get("KORVANE_LIBRARY")
    if named:
        return named
    here = Path(__file__).resolve().parent
    for folder in (here, here.parents[1] / "bin"):
        if (folder / "korvane.dll").is_file():
            return str(folder / "korvane.dll")
    raise ImportError("korvane.dll is neither beside korvane.py nor in the package; KORVANE_LIBRARY can name it")


def _done(code, function, _):
    if code != Code.OK:
        raise Error(function.__name__, code)


def _yes_or_no(answer, function, _):
    if answer < 0:
        raise Error(function.__name__, answer)
    return answer == 1


def _owned_text(address, _, __):
    if not address:
        return None
    try:
        length = 0
        while c_uint16.from_address(address + 2 * length).value:
            length += 1
        return ctypes.string_at(address, 2 * length).decode("utf-16-le", "surrogatepass")
    finally:
        _library.freeTextResult(address)


_TEXT = POINTER(c_uint16)
_RECORD = POINTER(TargetRecord)
_WINDOW = c_void_p

# Parameters of every function, by what becomes of its result.
_NOTHING = {
    "cleanupAutomation": [],
    "clearElementCache": [],
    "delay": [c_int],
    "freeTextResult": [c_void_p],
    "initializeLog": [_TEXT],
    "logAction": [_TEXT, c_int, c_int],
    "logActionWithTimestamp": [_TEXT, c_int, c_int, c_int64],
    "startCancelMonitor": [],
    "stopCancelMonitor": [],
}
_SHORTCUTS = (
    "sendAltA sendAltB sendAltD sendAltE sendAltP sendAltT sendAltZ sendCtrlA sendCtrlAltN sendCtrlL sendCtrlN sendCtrlQ "
    "sendCtrlS sendCtrlShiftF3 sendCtrlV sendShiftF2 sendShiftF4 sendShiftInsert"
).split()
_DONE = {
    **{name: [] for name in _SHORTCUTS},
    "captureTargetAtCursor": [_RECORD],
    "captureTargetAtPoint": [_RECORD, c_int, c_int],
    "clickTarget": [_RECORD, _WINDOW],
    "ensureWindowFocus": [_WINDOW],
    "getWindowInfo": [_WINDOW, POINTER(WindowInfo)],
    "initializeAutomation": [],
    "pasteToTargetDirect": [_RECORD, _WINDOW, _TEXT, c_int],
    "pasteToTargetSimple": [_RECORD, _WINDOW],
    "pasteToTargetWithVerify": [_RECORD, _WINDOW],
    "pasteToTargetWithVerifyEx": [_RECORD, _WINDOW, c_int],
    "sendKey": [c_int],
    "sendKeySequence": [_TEXT, c_int],
    "setClipboardText": [_TEXT],
    "setClipboardTextAndHtml": [_TEXT, c_char_p],
    "setTargetWindow": [_WINDOW],
    "verifySimple": [_TEXT, _WINDOW],
    "verifyTarget": [_RECORD, _WINDOW],
    "waitForFieldChange": [_RECORD, _WINDOW, _TEXT, c_int],
    "waitForFieldEmpty": [_RECORD, _WINDOW, c_int],
    "waitForTargetContainsPartialText": [_RECORD, _WINDOW, _TEXT, c_int],
    "waitForTargetContainsText": [_RECORD, _WINDOW, _TEXT, c_int],
}
_YES_OR_NO = {
    "isCancelled": [],
    "isTargetEmpty": [_RECORD, _WINDOW],
    "targetContainsPartialText": [_RECORD, _WINDOW, _TEXT],
    "targetContainsText": [_RECORD, _WINDOW, _TEXT],
}
_OWNED_TEXT = {"getTargetText": [_RECORD, _WINDOW]}
_HANDLE = {"findWindowByClick": []}


def _load():
    if sys.maxsize < 2**32:
        raise ImportError("korvane needs a 64-bit Python")
    library = ctypes.CDLL(_find_library())
    kinds = [
        (_NOTHING, None, None),
        (_DONE, c_int, _done),
        (_YES_OR_NO, c_int, _yes_or_no),
        (_OWNED_TEXT, c_void_p, _owned_text),
        (_HANDLE, c_void_p, None),
    ]
    for functions, result, check in kinds:
        for name, parameters in functions.items():
            function = getattr(library, name)
            function.argtypes, function.restype = parameters, result
            if check is not None:
                function.errcheck = check
    return library


_library = _load()

# ---- Automation context and log ----


def initialize_automation():
    _library.initializeAutomation()


def cleanup_automation():
    _library.cleanupAutomation()


def set_target_window(window):
    """The window that clicking and pasting use without one of their own; None clears it."""
    _library.setTargetWindow(window)


def delay(milliseconds):
    _library.delay(milliseconds)


def initialize_log(path=None):
    """Without a path: in the user's local application data folder."""
    _library.initializeLog(_units(None if path is None else os.fspath(path)))


def log_action(action, result=Code.OK, duration_ms=0):
    _library.logAction(_units(action), result, duration_ms)


def log_action_with_timestamp(action, result, duration_ms, timestamp_ms):
    _library.logActionWithTimestamp(_units(action), result, duration_ms, timestamp_ms)


class Session:
    """From the log's opening to the clean-up, on one thread."""

    def __init__(self, log_path=None):
        self._log_path = log_path

    def __enter__(self):
        initialize_log(self._log_path)
        try:
            initialize_automation()
        except Error:
            cleanup_automation()
            raise
        return self

    def __exit__(self, *_):
        cleanup_automation()


# ---- Capture and resolution ----


def capture_target_at_point(x, y):
    target = TargetRecord()
    _library.captureTargetAtPoint(target, x, y)
    return target


def capture_target_at_cursor():
    target = TargetRecord()
    _library.captureTargetAtCursor(target)
    return target


def verify_target(target, window):
    _library.verifyTarget(target, window)


def clear_element_cache():
    _library.clearElementCache()


# ---- Clicking and pasting; without a window, that of set_target_window ----


def click_target(target, window=None):
    _library.clickTarget(target, window)


def ensure_window_focus(window):
    _library.ensureWindowFocus(window)


def paste_to_target_with_verify(target, window=None):
    _library.pasteToTargetWithVerify(target, window)


def paste_to_target_with_verify_ex(target, window, timeout_ms):
    _library.pasteToTargetWithVerifyEx(target, window, timeout_ms)


def paste_to_target_direct(target, window, text, insert=False):
    _library.pasteToTargetDirect(target, window, _units(text), 1 if insert else 0)


def paste_to_target_simple(target, window=None):
    _library.pasteToTargetSimple(target, window)


# ---- Keyboard ----


def send_key(virtual_key):
    _library.sendKey(virtual_key)


def send_key_sequence(text, pause_ms=1):
    _library.sendKeySequence(_units(text), pause_ms)


def _underscored(name):
    return "".join("_" + unit.lower() if unit.isupper() else unit for unit in name)


# send_alt_a and the other fixed shortcuts, without parameters.
for _name in _SHORTCUTS:
    globals()[_underscored(_name)] = getattr(_library, _name)

# ---- Clipboard ----


def set_clipboard_text(text):
    _library.setClipboardText(_units(text))


def set_clipboard_text_and_html(text, html):
    if html is not None and "\0" in html:
        raise ValueError("korvane: a NUL inside the HTML")
    _library.setClipboardTextAndHtml(_units(text), None if html is None else html.encode("utf-8"))


# ---- Reading, tests and waits ----


def get_target_text(target, window):
    """The text, or None when there is none."""
    return _library.getTargetText(target, window)


def is_target_empty(target, window):
    return _library.isTargetEmpty(target, window)


def target_contains_text(target, window, expected):
    return _library.targetContainsText(target, window, _units(expected))


def target_contains_partial_text(target, window, part):
    return _library.targetContainsPartialText(target, window, _units(part))


def wait_for_field_change(target, window, previous, timeout_ms):
    _library.waitForFieldChange(target, window, _units(previous), timeout_ms)


def wait_for_field_empty(target, window, timeout_ms):
    _library.waitForFieldEmpty(target, window, timeout_ms)


def wait_for_target_contains_partial_text(target, window, part, timeout_ms):
    _library.waitForTargetContainsPartialText(target, window, _units(part), timeout_ms)


def wait_for_target_contains_text(target, window, expected, timeout_ms):
    _library.waitForTargetContainsText(target, window, _units(expected), timeout_ms)


def verify_simple(expected, window=None):
    """Whether the focused field's text matches; goes through the clipboard."""
    try:
        _library.verifySimple(_units(expected), window)
        return True
    except Error as error:
        if error.code != Code.NOT_FOUND:
            raise
        return False


# ---- Windows and cancelling ----


def find_window_by_click():
    """The window that the user clicks next, or None."""
    return _library.findWindowByClick()


def get_window_info(window):
    info = WindowInfo()
    _library.getWindowInfo(window, info)
    return info


def start_cancel_monitor():
    _library.startCancelMonitor()


def stop_cancel_monitor():
    _library.stopCancelMonitor()


def is_cancelled():
    return _library.isCancelled()


class CancelMonitor:
    """Watches the Escape key within a `with` block."""

    def __enter__(self):
        start_cancel_monitor()
        return self

    def __exit__(self, *_):
        stop_cancel_monitor()
