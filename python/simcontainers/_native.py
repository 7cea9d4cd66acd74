"""Loading of the shared library and the signatures of its plain exports."""

from __future__ import annotations

import ctypes
import os
import sys
from pathlib import Path
from typing import Optional, Tuple

# Set to the full path of the shared library (or the folder that holds it) to
# use that one instead of the library installed beside this package.
LIBRARY_VARIABLE = "SIMCONTAINERS_LIBRARY"


def platform_names() -> Tuple[str, Optional[str]]:
    """The shared library's file name here, and the C runtime that allocates
    what the library hands out, for ``free`` (None: the process's own)."""
    if sys.platform == "win32":
        # The MinGW build's C runtime.
        return "VEXZORSimContainers.dll", "msvcrt"
    if sys.platform == "darwin":
        return "libVEXZORSimContainers.dylib", None
    return "libVEXZORSimContainers.so", None


def library_path() -> Path:
    """Where the shared library is: the environment's choice, else where the
    installation put it relative to this package."""
    name = platform_names()[0]
    chosen = os.environ.get(LIBRARY_VARIABLE)
    if chosen:
        path = Path(chosen)
        return path / name if path.is_dir() else path
    try:
        from ._location import LIBRARY_DIR
    except ImportError:
        raise ImportError(
            f"simcontainers is not installed with its library; set {LIBRARY_VARIABLE} "
            f"to the path of {name}"
        ) from None
    return Path(__file__).resolve().parent / LIBRARY_DIR / name


_u8 = ctypes.c_ubyte
_uint = ctypes.c_uint
_str = ctypes.c_char_p
_ptr = ctypes.c_void_p
_buf = ctypes.POINTER(ctypes.c_char)  # a caller's error buffer

# Every plain export: name, result type, argument types.
SIGNATURES = {
    "ZORSimContainers_initializeC": (ctypes.c_int, []),
    "ZORSimContainers_finalizeC": (None, []),
    "ZORSimUttFileUtils_GlobInit": (_u8, [_str, ctypes.POINTER(_ptr), _uint, _buf]),
    "ZORSimUttFileUtils_GlobEmpty": (_u8, [_ptr, ctypes.POINTER(_u8), _uint, _buf]),
    "ZORSimUttFileUtils_GlobFront": (_u8, [_ptr, ctypes.POINTER(_str), _uint, _buf]),
    "ZORSimUttFileUtils_GlobNext": (_u8, [_ptr, _uint, _buf]),
    "ZORSimUttFileUtils_GlobFree": (_u8, [_ptr, _uint, _buf]),
    "ZORSimUttPythonGlueTest_CheckString": (_u8, [_str, ctypes.POINTER(_ptr), _buf, _uint]),
    "ZORSimUttResourceMonitorInitialize": (None, [_str, ctypes.c_int]),
    "ZORSimUttResourceMonitorIniTimer": (None, [ctypes.c_int, _str]),
    "ZORSimUttResourceMonitorStartTimer": (None, [ctypes.c_int]),
    "ZORSimUttResourceMonitorStopTimer": (None, [ctypes.c_int]),
    "ZORSimUttResourceMonitorMark": (None, [_str]),
    "ZORSimUttResourceMonitorSimMark": (None, [_str]),
}


def load() -> Tuple[ctypes.CDLL, ctypes.CDLL]:
    """The library with every export declared, and the C runtime."""
    path = library_path()
    if hasattr(os, "add_dll_directory"):
        # Windows looks for the base library beside it only when told so.
        os.add_dll_directory(str(path.parent))
    library = ctypes.CDLL(str(path))
    for name, (result, arguments) in SIGNATURES.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments
    runtime = ctypes.CDLL(platform_names()[1])
    runtime.free.restype = None
    runtime.free.argtypes = [_ptr]
    return library, runtime
