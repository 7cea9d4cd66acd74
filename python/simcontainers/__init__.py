"""Python access to the plain entry points of VEXZORSimContainers.

Directory globbing, the string round trip of the script bindings, the
library's start and stop, and the resource monitor's timers and marks.
Text goes in and comes out as ``str`` (UTF-8 at the library's boundary);
every failure the library reports raises :class:`SimError` with the
library's own text.

    import simcontainers
    for path in simcontainers.glob("results/*.dat"):
        print(path)
"""

from __future__ import annotations

import ctypes
from contextlib import contextmanager
from types import TracebackType
from typing import Any, Callable, Iterator, Optional, Type

from . import _native

__all__ = [
    "ERROR_CAPACITY",
    "Glob",
    "SimError",
    "check_string",
    "finalize",
    "glob",
    "initialize",
    "mark",
    "started",
    "timer",
]

#: Bytes of the buffer that receives the library's error texts; a longer text
#: is cut to one byte less.
ERROR_CAPACITY = 1024

_library, _runtime = _native.load()


class SimError(Exception):
    """A failure reported by the library; ``str(error)`` is its text."""


def _encode(text: str) -> bytes:
    if "\0" in text:
        raise ValueError("embedded null character")
    # Names that are not valid UTF-8 on disk travel as surrogates, as in os.
    return text.encode("utf-8", "surrogateescape")


def _decode(data: bytes) -> str:
    return data.decode("utf-8", "surrogateescape")


def _checked(function: Callable[..., int], *arguments: Any) -> None:
    """Calls an export that takes the error buffer last; 0 raises its text."""
    capacity = ERROR_CAPACITY
    error = ctypes.create_string_buffer(capacity)
    if not function(*arguments, capacity, error):
        raise SimError(_decode(error.value))


class Glob:
    """The paths matching a wildcard pattern, an iterator of ``str``.

    ``*`` and ``?`` in the pattern's last component match names, case
    ignored; a path comes joined to the pattern's directory part with ``/``.
    Entries come in the order the OS lists them. A missing directory raises
    :class:`SimError`; no match is simply an empty iteration.

    The library's handle is freed when the iteration ends or fails, on
    :meth:`close`, at the end of a ``with`` block, or when the object is
    dropped.
    """

    def __init__(self, pattern: str) -> None:
        self._handle: Optional[int] = None
        self._started = False
        handle = ctypes.c_void_p()
        _checked(_library.ZORSimUttFileUtils_GlobInit, _encode(pattern), ctypes.byref(handle))
        self._handle = handle.value

    def __iter__(self) -> Glob:
        return self

    def __next__(self) -> str:
        if self._handle is None:
            raise StopIteration
        try:
            if self._started:
                _checked(_library.ZORSimUttFileUtils_GlobNext, self._handle)
            self._started = True
            empty = ctypes.c_ubyte()
            _checked(_library.ZORSimUttFileUtils_GlobEmpty, self._handle, ctypes.byref(empty))
            if empty.value:
                raise StopIteration
            front = ctypes.c_char_p()
            _checked(_library.ZORSimUttFileUtils_GlobFront, self._handle, ctypes.byref(front))
            # Copied at once: the library keeps the text only until the next call.
            return _decode(front.value or b"")
        except BaseException:
            self.close()
            raise

    def close(self) -> None:
        """Frees the library's handle; later iteration yields nothing."""
        handle, self._handle = self._handle, None
        if handle is not None:
            # Freeing always answers "Glob Error: unknown error"; by the
            # library's contract that means nothing, so no buffer is offered.
            _library.ZORSimUttFileUtils_GlobFree(handle, 0, None)

    def __enter__(self) -> Glob:
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        value: Optional[BaseException],
        traceback: Optional[TracebackType],
    ) -> None:
        self.close()

    def __del__(self) -> None:
        self.close()


def glob(pattern: str) -> Glob:
    """The paths matching ``pattern``; see :class:`Glob`."""
    return Glob(pattern)


def check_string(text: str) -> str:
    """Hands ``text`` through the library and back, as the script bindings do.

    The text "Bad string." (and text that is not UTF-8) raises
    :class:`SimError` with the library's message for a bad string.
    """
    output = ctypes.c_void_p()
    capacity = ERROR_CAPACITY
    error = ctypes.create_string_buffer(capacity)
    if not _library.ZORSimUttPythonGlueTest_CheckString(_encode(text), ctypes.byref(output), error, capacity):
        raise SimError(_decode(error.value))
    try:
        return _decode(ctypes.string_at(output.value))
    finally:
        _runtime.free(output)


def initialize() -> int:
    """Starts the library (counted; loading it already counts once).

    Returns the library's count: the new use count when it was running."""
    return int(_library.ZORSimContainers_initializeC())


def finalize() -> None:
    """Undoes one :func:`initialize`."""
    _library.ZORSimContainers_finalizeC()


@contextmanager
def started() -> Iterator[int]:
    """:func:`initialize` for the ``with`` block, :func:`finalize` after it."""
    count = initialize()
    try:
        yield count
    finally:
        finalize()


@contextmanager
def timer(number: int, label: str) -> Iterator[None]:
    """Times the ``with`` block on the resource monitor's timer ``number``,
    labelled ``label``; the monitor adds up every run of a timer."""
    _library.ZORSimUttResourceMonitorIniTimer(number, _encode(label))
    _library.ZORSimUttResourceMonitorStartTimer(number)
    try:
        yield
    finally:
        _library.ZORSimUttResourceMonitorStopTimer(number)


def mark(text: str) -> None:
    """Records ``text`` with the time on the resource monitor."""
    _library.ZORSimUttResourceMonitorMark(_encode(text))
