"""Records and replays user-interface actions on other applications' windows, on 64-bit Windows.

    import korvane

    with korvane.Session("korvane.log") as session:
        form = session.window(title="Order form")
        name = form.target_at(320, 240)  # a point of the screen
        name.paste("Ada")
        print(name.text())
        form.target(korvane.TargetRecord(bytes(name.record))).click()  # bytes are what a host stores

What fails is a NotFoundError, InvalidArgumentError, FailedError or CancelledError with `code`, `function` and `log`, the
last lines of the log. Every function of korvane.h is here, too, in lower case with underscores.

The library is the file that KORVANE_LIBRARY names, else korvane.dll in the package or in bin/ of the unpacked zip.
"""

from . import functions
from .codes import (
    KEY_CTRL_A, CancelledError, Code, Error, FailedError, InvalidArgumentError, Method, NotFoundError,
)
from .functions import *  # noqa: F403
from .records import PathLevel, TargetRecord, WindowInfo
from .session import CancelMonitor, Session, Target, Window

__all__ = [
    "KEY_CTRL_A", "CancelMonitor", "CancelledError", "Code", "Error", "FailedError", "InvalidArgumentError", "Method",
    "NotFoundError", "PathLevel", "Session", "Target", "TargetRecord", "Window", "WindowInfo",
]
__all__ += functions.__all__
