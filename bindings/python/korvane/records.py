"""Captured elements and windows."""

from __future__ import annotations

import ctypes
from ctypes import c_int32, c_uint16, c_void_p
from typing import Any, List, Mapping, NamedTuple, Tuple, Type, Union

from .codes import Method


class _Record(ctypes.Structure):
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


class _Info(ctypes.Structure):
    _fields_ = [("title", c_uint16 * 256), ("processName", c_uint16 * 256), ("window", c_void_p)]


def _text(units: Any) -> str:
    """Up to the first zero unit of an array."""
    data = bytes(units)
    end = next((i for i in range(0, len(data), 2) if data[i : i + 2] == b"\0\0"), len(data))
    return data[:end].decode("utf-16-le", "surrogatepass")


def _write(units: Any, text: str) -> None:
    data = text.encode("utf-16-le", "surrogatepass")
    if len(data) >= ctypes.sizeof(units):
        raise ValueError(f"korvane: a text is longer than {ctypes.sizeof(units) // 2 - 1} units")
    ctypes.memmove(units, data + b"\0\0", len(data) + 2)


def _text_of_json(value: Any) -> str:
    """A text in a recording: a string, or units as hexadecimal numbers where a string would not bring back every one."""
    return value if isinstance(value, str) else "".join(chr(int(unit, 16)) for unit in value["units"])


_METHOD_WORDS = {
    "undecided": Method.UNDECIDED,
    "automation-id": Method.AUTOMATION_ID,
    "coordinates": Method.COORDINATES,
    "tree-path": Method.TREE_PATH,
}


class PathLevel(NamedTuple):
    """One level of a tree path."""

    control_type: int
    """The UI Automation control type; 0: any."""
    class_name: str
    """Empty: any."""
    child_index: int
    """The position among siblings of the same type and class, from 1; 0: the first."""


class TargetRecord:
    """A captured element. `bytes(record)` is what a host stores, `TargetRecord(data)` reads it again."""

    SIZE = ctypes.sizeof(_Record)

    def __init__(self, data: Union[bytes, bytearray, None] = None) -> None:
        if data is not None and len(data) != self.SIZE:
            raise ValueError(f"korvane: a record has {self.SIZE} bytes")
        self._as_parameter_ = _Record() if data is None else _Record.from_buffer_copy(data)

    @property
    def automation_id(self) -> str:
        return _text(self._as_parameter_.automationId)

    @property
    def hwnd(self) -> int:
        """The window of the capture, or 0."""
        return self._as_parameter_.hwnd or 0

    @property
    def x(self) -> int:
        """The screen point of the capture, in pixels."""
        return int(self._as_parameter_.x)

    @property
    def y(self) -> int:
        return int(self._as_parameter_.y)

    @property
    def identification_method(self) -> int:
        """A `Method`, or the other number that is stored."""
        method: int = self._as_parameter_.identificationMethod
        return Method(method) if method in Method._value2member_map_ else method

    @identification_method.setter
    def identification_method(self, method: int) -> None:
        self._as_parameter_.identificationMethod = method

    @property
    def path(self) -> List[PathLevel]:
        """The levels of the tree path, outermost first."""
        record = self._as_parameter_
        return [
            PathLevel(record.controlTypes[i], _text(record.classNames[i]), record.childIndices[i])
            for i in range(min(max(record.pathLength, 0), 20))
        ]

    @classmethod
    def from_recording(cls, target: Mapping[str, Any]) -> TargetRecord:
        """The record of a step's `target` in a recording of the companion program."""
        made = cls()
        record = made._as_parameter_
        method = target["identificationMethod"]
        record.identificationMethod = _METHOD_WORDS[method] if isinstance(method, str) else method
        _write(record.automationId, _text_of_json(target["automationId"]))
        record.hwnd = int(target["hwnd"], 16)
        record.x, record.y, record.pathLength = target["x"], target["y"], target["pathLength"]
        for i, level in enumerate(target["levels"]):
            record.controlTypes[i] = level["controlType"]
            _write(record.classNames[i], _text_of_json(level["className"]))
            record.childIndices[i] = level["childIndex"]
        return made

    def __bytes__(self) -> bytes:
        return bytes(self._as_parameter_)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, TargetRecord):
            return NotImplemented
        return bytes(self) == bytes(other)

    __hash__ = None  # type: ignore[assignment]  # The method can be changed.

    def __repr__(self) -> str:
        return (f"<TargetRecord automation_id={self.automation_id!r} x={self.x} y={self.y} "
                f"identification_method={self.identification_method!r} levels={len(self.path)}>")

    def __reduce__(self) -> Tuple[Type[TargetRecord], Tuple[bytes]]:
        return type(self), (bytes(self),)


class WindowInfo:
    """What `get_window_info` tells of a window."""

    def __init__(self, data: Union[bytes, bytearray, None] = None) -> None:
        self._as_parameter_ = _Info() if data is None else _Info.from_buffer_copy(data)

    @property
    def title(self) -> str:
        """Cut to 255 units."""
        return _text(self._as_parameter_.title)

    @property
    def process_name(self) -> str:
        """The file name of the process, or "Unknown"."""
        return _text(self._as_parameter_.processName)

    @property
    def window(self) -> int:
        return self._as_parameter_.window or 0

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, WindowInfo):
            return NotImplemented
        return bytes(self._as_parameter_) == bytes(other._as_parameter_)

    def __hash__(self) -> int:
        return hash(bytes(self._as_parameter_))

    def __repr__(self) -> str:
        return f"<WindowInfo title={self.title!r} process_name={self.process_name!r} window={self.window}>"

    def __reduce__(self) -> Tuple[Type[WindowInfo], Tuple[bytes]]:
        return type(self), (bytes(self._as_parameter_),)
