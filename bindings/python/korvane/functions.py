"""The 54 functions of korvane.h, in lower case with underscores.

What answers a result code there returns nothing here and raises an `Error` unless it is OK; what answers yes or no
returns a bool. Windows are integers. Texts are str: lone surrogates pass in both directions, and a text with a NUL,
which would be cut off there, is a ValueError.
"""

# Written by scripts/make_bindings.py from include/korvane/korvane.h.

from __future__ import annotations

from ctypes import c_int, c_int64, c_void_p
from typing import Optional

from ._library import (
    answer_of, check, declare, handle, info_of, library, open_log, owned_text, record_of, units, utf8,
)
from .records import TargetRecord, WindowInfo

__all__ = [
    "initialize_automation", "cleanup_automation", "set_target_window", "delay", "initialize_log", "log_action",
    "log_action_with_timestamp", "capture_target_at_point", "capture_target_at_cursor", "verify_target",
    "clear_element_cache", "click_target", "ensure_window_focus", "paste_to_target_with_verify_ex",
    "paste_to_target_with_verify", "paste_to_target_direct", "paste_to_target_simple", "send_key",
    "send_key_sequence", "send_alt_a", "send_alt_b", "send_alt_d", "send_alt_e", "send_alt_p", "send_alt_t",
    "send_alt_z", "send_ctrl_a", "send_ctrl_alt_n", "send_ctrl_l", "send_ctrl_n", "send_ctrl_q", "send_ctrl_s",
    "send_ctrl_shift_f3", "send_ctrl_v", "send_shift_f2", "send_shift_f4", "send_shift_insert",
    "set_clipboard_text", "set_clipboard_text_and_html", "get_target_text", "free_text_result", "is_target_empty",
    "target_contains_text", "target_contains_partial_text", "wait_for_field_change", "wait_for_field_empty",
    "wait_for_target_contains_partial_text", "wait_for_target_contains_text", "verify_simple",
    "find_window_by_click", "get_window_info", "start_cancel_monitor", "stop_cancel_monitor", "is_cancelled",
]

declare("initializeAutomation", c_int, [])
declare("cleanupAutomation", None, [])
declare("setTargetWindow", c_int, [c_void_p])
declare("delay", None, [c_int])
declare("initializeLog", None, [c_void_p])
declare("logAction", None, [c_void_p, c_int, c_int])
declare("logActionWithTimestamp", None, [c_void_p, c_int, c_int, c_int64])
declare("captureTargetAtPoint", c_int, [c_void_p, c_int, c_int])
declare("captureTargetAtCursor", c_int, [c_void_p])
declare("verifyTarget", c_int, [c_void_p, c_void_p])
declare("clearElementCache", None, [])
declare("clickTarget", c_int, [c_void_p, c_void_p])
declare("ensureWindowFocus", c_int, [c_void_p])
declare("pasteToTargetWithVerifyEx", c_int, [c_void_p, c_void_p, c_int])
declare("pasteToTargetWithVerify", c_int, [c_void_p, c_void_p])
declare("pasteToTargetDirect", c_int, [c_void_p, c_void_p, c_void_p, c_int])
declare("pasteToTargetSimple", c_int, [c_void_p, c_void_p])
declare("sendKey", c_int, [c_int])
declare("sendKeySequence", c_int, [c_void_p, c_int])
declare("sendAltA", c_int, [])
declare("sendAltB", c_int, [])
declare("sendAltD", c_int, [])
declare("sendAltE", c_int, [])
declare("sendAltP", c_int, [])
declare("sendAltT", c_int, [])
declare("sendAltZ", c_int, [])
declare("sendCtrlA", c_int, [])
declare("sendCtrlAltN", c_int, [])
declare("sendCtrlL", c_int, [])
declare("sendCtrlN", c_int, [])
declare("sendCtrlQ", c_int, [])
declare("sendCtrlS", c_int, [])
declare("sendCtrlShiftF3", c_int, [])
declare("sendCtrlV", c_int, [])
declare("sendShiftF2", c_int, [])
declare("sendShiftF4", c_int, [])
declare("sendShiftInsert", c_int, [])
declare("setClipboardText", c_int, [c_void_p])
declare("setClipboardTextAndHtml", c_int, [c_void_p, c_void_p])
declare("getTargetText", c_void_p, [c_void_p, c_void_p])
declare("freeTextResult", None, [c_void_p])
declare("isTargetEmpty", c_int, [c_void_p, c_void_p])
declare("targetContainsText", c_int, [c_void_p, c_void_p, c_void_p])
declare("targetContainsPartialText", c_int, [c_void_p, c_void_p, c_void_p])
declare("waitForFieldChange", c_int, [c_void_p, c_void_p, c_void_p, c_int])
declare("waitForFieldEmpty", c_int, [c_void_p, c_void_p, c_int])
declare("waitForTargetContainsPartialText", c_int, [c_void_p, c_void_p, c_void_p, c_int])
declare("waitForTargetContainsText", c_int, [c_void_p, c_void_p, c_void_p, c_int])
declare("verifySimple", c_int, [c_void_p, c_void_p])
declare("findWindowByClick", c_void_p, [])
declare("getWindowInfo", c_int, [c_void_p, c_void_p])
declare("startCancelMonitor", None, [])
declare("stopCancelMonitor", None, [])
declare("isCancelled", c_int, [])


def initialize_automation() -> None:
    """Creates the UI Automation context when it does not exist yet.

    FailedError: when the object model or UI Automation cannot be initialised (reported in the log).
    """
    check("initializeAutomation", library.initializeAutomation())


def cleanup_automation() -> None:
    """Stops the cancel monitor, releases the automation context, closes the log and clears the target window. The
    coordinate cache stays. Does nothing when nothing was set up."""
    library.cleanupAutomation()
    open_log(False)


def set_target_window(window: Optional[int]) -> None:
    """Sets the window that clicking, pasting and `verify_simple` use when their own window argument is None.

    window: the default window; None clears it. Stored in every case.

    FailedError: when the automation context cannot be created.
    """
    check("setTargetWindow", library.setTargetWindow(handle(window)))


def delay(milliseconds: int) -> None:
    """Sleeps the calling thread.

    milliseconds: the time; a value below 1 sleeps 50 milliseconds.
    """
    library.delay(milliseconds)


def initialize_log(log_path: Optional[str] = None) -> None:
    """Opens the log, appending, after closing an open one. A file that cannot be opened leaves the log closed,
    silently, and everything else works unchanged. Lines end with CR LF; units up to U+00FF are one byte each,
    others are written as `\\uXXXX` with four lower-case hexadecimal digits. A line feed inside a logged text is
    stored as CR LF; otherwise texts of other programs are written as they come, so a line that begins inside such a
    text may look like one of the library's.

    log_path: the file; its folder must exist. Null or empty selects `Tavrin\\automation_execution.log` in the
    user's local application data folder, where the Tavrin folder is created when missing.
    """
    library.initializeLog(units(log_path))
    open_log(log_path)


def log_action(action: str, result: int, duration_ms: int) -> None:
    """Writes one action line to the log, stamped with the local time. Does nothing when `action` is None or the log
    closed.

    action: what the host did.

    result: its result code.

    duration_ms: how long it took in milliseconds.
    """
    library.logAction(units(action), result, duration_ms)


def log_action_with_timestamp(action: str, result: int, duration_ms: int, timestamp_ms: int) -> None:
    """Like `log_action`, stamped with the given instant, in UTC.

    timestamp_ms: milliseconds since 1970-01-01 00:00:00 UTC. An instant before 1601 or after the year 30827 is
    written as 0000-00-00 00:00:00.000.
    """
    library.logActionWithTimestamp(units(action), result, duration_ms, timestamp_ms)


def capture_target_at_point(x: int, y: int) -> TargetRecord:
    """Captures the element at a screen point, with every identification it has, and leaves `identification_method`
    at -1. An element that vanishes meanwhile may leave a path to the first child: verify a record before relying on
    it.

    NotFoundError: no element at the point.

    FailedError: the automation context cannot be created.
    """
    target = TargetRecord()
    check("captureTargetAtPoint", library.captureTargetAtPoint(record_of(target), x, y))
    return target


def capture_target_at_cursor() -> TargetRecord:
    """Captures the element under the mouse cursor, tracing its steps to the standard output, and chooses the
    method: tree path when one was captured, else coordinates.

    NotFoundError: the cursor or the element cannot be had, or the automation context cannot be created.
    """
    target = TargetRecord()
    check("captureTargetAtCursor", library.captureTargetAtCursor(record_of(target)))
    return target


def verify_target(target: TargetRecord, window: int) -> None:
    """Finds the target without acting on it and remembers its centre for the next `click_target`: under the window
    and the AutomationId, also under an empty one, which all records without an AutomationId then share.

    window: the window the target belongs to; required.

    Returns when this is so: found.

    NotFoundError: not found.

    InvalidArgumentError: an argument is None.

    FailedError: the automation context cannot be created.
    """
    check("verifyTarget", library.verifyTarget(record_of(target), handle(window)))


def clear_element_cache() -> None:
    """Writes the hit statistics to the log, forgets all remembered points and sets the counters to 0. See
    `click_target` for when a host needs it."""
    library.clearElementCache()


def click_target(target: TargetRecord, window: Optional[int] = None) -> None:
    """Clicks the target with the left button: at its remembered point when there is one, else after finding it and
    bringing its window to the foreground.

    A click that had to search remembers its point for every record with an AutomationId, whatever its
    identification method, under the window and the AutomationId alone. A click at a remembered point neither
    searches nor brings the window to the foreground; it goes beside its element when the window has moved, and to
    the first element found when two elements of one window share an AutomationId. Call `clear_element_cache` before
    each step unless identifiers are known to be unique and the window to stay where it is.

    The cancelled state is asked once, before the search: Escape during the search does not prevent the click,
    except that a tree path then ends unfound and the screen point is tried. The platform may report any clickable
    point, (0, 0) included; it is clicked as it is. Two quick clicks on one spot are a double click.

    window: the window the target belongs to; None uses the one of `set_target_window`.

    Returns when this is so: the click was sent.

    NotFoundError: the window or the element was not found.

    InvalidArgumentError: `target` is None or there is no window.

    FailedError: the automation context, the element's point or the input failed.

    CancelledError: cancelled.
    """
    check("clickTarget", library.clickTarget(record_of(target), handle(window)))


def ensure_window_focus(window: int) -> None:
    """Brings a window to the foreground, restoring it when minimised.

    Returns when this is so: it is in the foreground.

    NotFoundError: no such window.

    InvalidArgumentError: `window` is None.

    FailedError: the system refused.
    """
    check("ensureWindowFocus", library.ensureWindowFocus(handle(window)))


def paste_to_target_with_verify_ex(target: TargetRecord, window: int, timeout_ms: int) -> None:
    """Clicks the target as `click_target` does, remembered points included, types Ctrl+V and polls the target's
    value every 2 ms until the clipboard's text shows. Only the element's Value is read, never its name. After a
    time-out the keystrokes have been sent.

    window: as for `click_target`.

    timeout_ms: milliseconds to watch; 0 or less means 150.

    Returns when this is so: the text shows.

    NotFoundError: the window or the element was not found.

    InvalidArgumentError: `target` is None or there is no window.

    FailedError: no clipboard text, input not accepted, or the text did not show in time.

    CancelledError: cancelled.
    """
    check("pasteToTargetWithVerifyEx", library.pasteToTargetWithVerifyEx(record_of(target), handle(window), timeout_ms))


def paste_to_target_with_verify(target: TargetRecord, window: Optional[int] = None) -> None:
    """`paste_to_target_with_verify_ex` with a time-out of 150 milliseconds."""
    check("pasteToTargetWithVerify", library.pasteToTargetWithVerify(record_of(target), handle(window)))


def paste_to_target_direct(target: TargetRecord, window: int, text: str, insert: bool = False) -> None:
    """Puts a text into the target's own control with a window message, without clipboard or keyboard. Brings the
    control's top-level window to the foreground first and sleeps 50 ms. Needs an automation context.

    window: as for `click_target`.

    text: the text.

    insert: inserts at the caret; without it the whole text is replaced.

    Returns when this is so: the message was sent, whatever the control did with it.

    NotFoundError: the element was not found or has no window of its own.

    InvalidArgumentError: `target` or `text` is None or there is no window.

    FailedError: out of memory.
    """
    check("pasteToTargetDirect", library.pasteToTargetDirect(record_of(target), handle(window), units(text), insert))


def paste_to_target_simple(target: TargetRecord, window: Optional[int] = None) -> None:
    """Types Ctrl+V into whatever has the keyboard focus.

    Returns when this is so: sent.

    InvalidArgumentError: `target` is None or there is no window.

    FailedError: input not accepted.
    """
    check("pasteToTargetSimple", library.pasteToTargetSimple(record_of(target), handle(window)))


def send_key(virtual_key: int) -> None:
    """Presses and releases one key.

    virtual_key: a virtual-key code, of which the low 16 bits count; 9999 stands for Ctrl+A.

    Returns when this is so: sent.

    InvalidArgumentError: the code is below 1.

    FailedError: input not accepted.
    """
    check("sendKey", library.sendKey(virtual_key))


def send_key_sequence(text: str, pause_ms: int = 1) -> None:
    """Types a text key by key on the calling thread's keyboard layout, which need not be the receiving window's.
    Units that no key produces are skipped. U+000D is the Enter key; U+000A is what the layout makes of it, usually
    Ctrl+Enter. A character on a dead key is typed as that key and combines with the next one.

    text: the text.

    pause_ms: milliseconds between characters; below 1 means 1.

    Returns when this is so: sent.

    InvalidArgumentError: the text is None or empty.

    FailedError: input not accepted: what came before stays typed.
    """
    check("sendKeySequence", library.sendKeySequence(units(text), pause_ms))


def send_alt_a() -> None:
    """Alt+A.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendAltA", library.sendAltA())


def send_alt_b() -> None:
    """Alt+B.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendAltB", library.sendAltB())


def send_alt_d() -> None:
    """Alt+D.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendAltD", library.sendAltD())


def send_alt_e() -> None:
    """Alt+E.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendAltE", library.sendAltE())


def send_alt_p() -> None:
    """Alt+P.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendAltP", library.sendAltP())


def send_alt_t() -> None:
    """Alt+T.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendAltT", library.sendAltT())


def send_alt_z() -> None:
    """Alt+Z.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendAltZ", library.sendAltZ())


def send_ctrl_a() -> None:
    """Ctrl+A.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendCtrlA", library.sendCtrlA())


def send_ctrl_alt_n() -> None:
    """Ctrl+Alt+N.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendCtrlAltN", library.sendCtrlAltN())


def send_ctrl_l() -> None:
    """Ctrl+L.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendCtrlL", library.sendCtrlL())


def send_ctrl_n() -> None:
    """Ctrl+N.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendCtrlN", library.sendCtrlN())


def send_ctrl_q() -> None:
    """Ctrl+Q.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendCtrlQ", library.sendCtrlQ())


def send_ctrl_s() -> None:
    """Ctrl+S.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendCtrlS", library.sendCtrlS())


def send_ctrl_shift_f3() -> None:
    """Ctrl+Shift+F3.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendCtrlShiftF3", library.sendCtrlShiftF3())


def send_ctrl_v() -> None:
    """Ctrl+V.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendCtrlV", library.sendCtrlV())


def send_shift_f2() -> None:
    """Shift+F2.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendShiftF2", library.sendShiftF2())


def send_shift_f4() -> None:
    """Shift+F4.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendShiftF4", library.sendShiftF4())


def send_shift_insert() -> None:
    """Shift+Insert.

    Returns when this is so: sent.

    FailedError: input not accepted.
    """
    check("sendShiftInsert", library.sendShiftInsert())


def set_clipboard_text(text: str) -> None:
    """Puts a text on the clipboard and reads it back. Where the user keeps a clipboard history, the text stays in
    it.

    Returns when this is so: written and read back equal.

    InvalidArgumentError: the text is None.

    FailedError: memory or the clipboard failed, or it read back differently.
    """
    check("setClipboardText", library.setClipboardText(units(text)))


def set_clipboard_text_and_html(text: str, html: str) -> None:
    """Puts a text and an HTML fragment ("HTML Format") on the clipboard and reads the text back. Without the HTML
    the call still succeeds when only the text could be written.

    It fails as `set_clipboard_text` does.

    html: the fragment.

    InvalidArgumentError: also when `html` is None.
    """
    check("setClipboardTextAndHtml", library.setClipboardTextAndHtml(units(text), utf8(html)))


def get_target_text(target: TargetRecord, window: int) -> Optional[str]:
    """The text the target shows: the first non-empty one of its value, name, and legacy value, name and
    description. An empty field therefore answers with its name, on Windows usually its label. Needs an automation
    context.

    window: the window the target belongs to; required.

    Returns the text, None when there is none (the log says why).
    """
    return owned_text(library.getTargetText(record_of(target), handle(window)))


def free_text_result(text: Optional[str]) -> None:
    """Releases a text of `get_target_text`; None is ignored."""
    # It was given back when the str was made.


def is_target_empty(target: TargetRecord, window: int) -> bool:
    """Tests the text of `get_target_text`. An empty field with a name or another text is not empty in this sense,
    and one without any text cannot be read.

    True: the target's text is white space only.

    NotFoundError: no text can be read.

    InvalidArgumentError: `target` is None.
    """
    return answer_of("isTargetEmpty", library.isTargetEmpty(record_of(target), handle(window)))


def target_contains_text(target: TargetRecord, window: int, expected_text: str) -> bool:
    """True: the target's text equals `expected_text`.

    NotFoundError: no text can be read.

    InvalidArgumentError: a pointer is None.
    """
    return answer_of("targetContainsText", library.targetContainsText(record_of(target), handle(window), units(expected_text)))


def target_contains_partial_text(target: TargetRecord, window: int, partial_text: str) -> bool:
    """True: the target's text contains `partial_text` or is contained in it.

    NotFoundError: no text can be read.

    InvalidArgumentError: a pointer is None.
    """
    return answer_of("targetContainsPartialText", library.targetContainsPartialText(record_of(target), handle(window), units(partial_text)))


def wait_for_field_change(target: TargetRecord, window: int, previous_text: str, timeout_ms: int) -> None:
    """The waits poll every 2 ms.

    timeout_ms: milliseconds; 0 or less means 150.

    Returns when this is so: the target's text became different from `previous_text`.

    InvalidArgumentError: a pointer is None.

    FailedError: time ran out.
    """
    check("waitForFieldChange", library.waitForFieldChange(record_of(target), handle(window), units(previous_text), timeout_ms))


def wait_for_field_empty(target: TargetRecord, window: int, timeout_ms: int) -> None:
    """Waits until `is_target_empty` answers 1; a field that shows its name when it is empty never does.

    Returns when this is so: `is_target_empty` answered 1.

    InvalidArgumentError: `target` is None.

    FailedError: time ran out.
    """
    check("waitForFieldEmpty", library.waitForFieldEmpty(record_of(target), handle(window), timeout_ms))


def wait_for_target_contains_partial_text(target: TargetRecord, window: int, partial_text: str, timeout_ms: int) -> None:
    """Returns when this is so: `target_contains_partial_text` answered 1.

    InvalidArgumentError: a pointer is None.

    FailedError: time ran out.
    """
    check("waitForTargetContainsPartialText", library.waitForTargetContainsPartialText(record_of(target), handle(window), units(partial_text), timeout_ms))


def wait_for_target_contains_text(target: TargetRecord, window: int, expected_text: str, timeout_ms: int) -> None:
    """Returns when this is so: `target_contains_text` answered 1.

    InvalidArgumentError: a pointer is None.

    FailedError: time ran out.
    """
    check("waitForTargetContainsText", library.waitForTargetContainsText(record_of(target), handle(window), units(expected_text), timeout_ms))


def verify_simple(expected_text: str, window: Optional[int] = None) -> bool:
    """Copies the focused field through the clipboard (Ctrl+A, Ctrl+C) and compares it with a text; either may
    contain the other. Only a to z, 0 to 9, U+00C0 to U+00FF and the marks ! , - . : ? are compared, and case is
    ignored for a to z alone. A text in another script has nothing to compare and matches everything. The clipboard
    keeps the copied text; where another program holds it, there is no second try. Takes at least 150 ms.

    window: only tested for presence; None uses the one of `set_target_window`.

    True: they match; not when they do not (the log shows where).

    InvalidArgumentError: the text is None or there is no window.

    FailedError: the clipboard or the input failed, or nothing was copied.
    """
    return answer_of("verifySimple", library.verifySimple(units(expected_text), handle(window)), found=0, not_found=-1)


def find_window_by_click() -> Optional[int]:
    """Lets the user pick a window: shows a cross cursor and takes the next left click anywhere, which no window
    receives. Runs a message loop on the calling thread until then; a quit message ends it and is posted again for
    the host.

    Returns the picked top-level window, or None when the mouse cannot be watched or the loop was ended.
    """
    window: Optional[int] = library.findWindowByClick()
    return window


def get_window_info(window: int) -> WindowInfo:
    """Describes a window.

    InvalidArgumentError: an argument is None and `info` is untouched.
    """
    info = WindowInfo()
    check("getWindowInfo", library.getWindowInfo(handle(window), info_of(info)))
    return info


def start_cancel_monitor() -> None:
    """Clears the cancelled state and starts watching the Escape key, replacing a monitor that runs."""
    library.startCancelMonitor()


def stop_cancel_monitor() -> None:
    """Stops watching the Escape key, waiting at most 300 ms. The cancelled state stays."""
    library.stopCancelMonitor()


def is_cancelled() -> bool:
    """True: when Escape was pressed since the last `start_cancel_monitor`, else 0."""
    return bool(library.isCancelled())
