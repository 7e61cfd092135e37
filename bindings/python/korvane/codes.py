"""Result codes, identification methods and errors."""

from __future__ import annotations

import enum
import os
from pathlib import Path
from typing import Dict, Optional, Sequence, Tuple, Type, Union


class Code(enum.IntEnum):
    """What functions answer."""

    OK = 0
    NOT_FOUND = -1
    INVALID_ARGUMENT = -2
    FAILED = -3
    CANCELLED = -4


class Method(enum.IntEnum):
    """Which identification of a record is tried first, before its screen point."""

    UNDECIDED = -1
    AUTOMATION_ID = 0
    COORDINATES = 2
    TREE_PATH = 3


KEY_CTRL_A = 9999
"""The value of `send_key` that stands for Ctrl+A."""


class Error(Exception):
    """A function answered a code other than OK."""

    function: str
    """The exported function, or the method that gave up."""
    code: int
    """A `Code`, or another number that the function answered."""
    log: Tuple[str, ...]
    """The last lines of the log when it failed, which tell why; none while no log is open."""

    def __init__(self, function: str, code: int, log: Sequence[str] = (), details: Optional[str] = None) -> None:
        self.function = function
        self.code = Code(code) if code in Code._value2member_map_ else code
        self.log = tuple(log)
        self.details = details
        name = self.code.name if isinstance(self.code, Code) else str(self.code)
        super().__init__(f"{function}: {details or name}")

    def __reduce__(self) -> Tuple[Type[Error], Tuple[object, ...]]:
        return type(self), (self.function, self.code, self.log, self.details)


class NotFoundError(Error):
    """An element, a window or a text is not there."""


class InvalidArgumentError(Error):
    """An argument is None or empty, or does not name one thing."""


class FailedError(Error):
    """The platform failed, or time ran out."""


class CancelledError(Error):
    """The user pressed Escape."""


_ERRORS: Dict[int, Type[Error]] = {
    Code.NOT_FOUND: NotFoundError,
    Code.INVALID_ARGUMENT: InvalidArgumentError,
    Code.FAILED: FailedError,
    Code.CANCELLED: CancelledError,
}

_LOG_LINES = 8
_LOG_BYTES = 8192
_log: Optional[Path] = None


def open_log(path: Union[str, None, bool]) -> None:
    """Where errors find the log's last lines: a path, None for the usual place, False for nowhere."""
    global _log
    if path is False:
        _log = None
    elif path:
        _log = Path(str(path)).absolute()
    else:
        _log = Path(os.environ.get("LOCALAPPDATA", "")) / "Tavrin" / "automation_execution.log"


def _last_log_lines() -> Tuple[str, ...]:
    if _log is None:
        return ()
    try:
        with open(_log, "rb") as file:
            size = file.seek(0, os.SEEK_END)
            file.seek(max(0, size - _LOG_BYTES))
            lines = [line for line in file.read().decode("latin-1").split("\r\n") if line]
    except OSError:
        return ()  # An error about the log would hide the one that is being told.
    return tuple(lines[1 if size > _LOG_BYTES else 0 :][-_LOG_LINES:])


def error_of(function: str, code: int, details: Optional[str] = None) -> Error:
    kind: Type[Error] = _ERRORS.get(code, Error)
    return kind(function, code, _last_log_lines(), details)
