"""The shared library and its functions."""

from __future__ import annotations

import ctypes
import os
import pathlib
import sys
from ctypes import POINTER, c_int32, c_ssize_t, c_uint16, c_uint32, c_void_p
from typing import Any, Callable

from ._version import version


class Rectangle(ctypes.Structure):
    _fields_ = [(name, c_int32) for name in ("left", "top", "right", "bottom")]


class Record(ctypes.Structure):
    """KERNAL of the C header."""

    _fields_ = [
        ("width", c_int32),
        ("height", c_int32),
        ("anchor_x", c_int32),
        ("anchor_y", c_int32),
        ("count", c_int32),
        ("bias", c_int32),
        ("offsets", POINTER(c_int32)),
        ("name", ctypes.c_char_p),
        ("weights", POINTER(c_int32)),
    ]


NUMBERS: dict[str, Any] = {
    "i32": c_int32,
    "u32": c_uint32,
    "u16": c_uint16,
    "u64": ctypes.c_uint64,
    "f32": ctypes.c_float,
    "f64": ctypes.c_double,
}


def _load() -> ctypes.CDLL:
    names = {"win32": "ombrilo.dll", "darwin": "libombrilo.dylib"}
    own = pathlib.Path(__file__).parent / names.get(sys.platform, "libombrilo.so")
    loaded = ctypes.CDLL(os.environ.get("OMBRILO_LIBRARY") or str(own))
    number = loaded.omb_version()
    found = f"{number >> 16}.{number >> 8 & 255}.{number & 255}"
    if found != version:
        raise ImportError(f"{loaded._name} is version {found}, but the package is {version}")
    return loaded


library = _load()


def function(name: str, result: Any, *parameters: Any) -> Callable[..., Any]:
    found = getattr(library, name)
    found.restype, found.argtypes = result, parameters
    return found  # type: ignore[no-any-return]


newdib = function("omb_newdib", c_void_p, c_int32, c_int32, c_uint16)
freedib = function("omb_freedib", None, c_void_p)
width = function("omb_DIBWidth", c_uint32, c_void_p)
height = function("omb_DIBHeight", c_uint32, c_void_p)
bit_count = function("omb_DIBBitCount", c_uint16, c_void_p)
num_colors = function("omb_DIBNumColors", c_uint32, c_void_p)
palette_size = function("omb_PaletteSize", c_uint16, c_void_p)
find_bits = function("omb_FindDIBBits", c_void_p, c_void_p)
copy_rectangle = function(
    "omb_cpydibrect", c_void_p, c_void_p, c_int32, c_uint32, c_uint32, c_uint32
)
from_pixels = function(
    "omb_frompixels", c_void_p, c_uint32, c_int32, c_int32, c_void_p, c_ssize_t, c_uint32
)
to_pixels = function("omb_topixels", c_uint32, c_void_p, c_uint32, c_void_p, c_ssize_t)
set_palette = function("omb_setpalette", c_uint32, c_void_p, ctypes.c_char_p, c_uint32)
set_resolution = function("omb_setresolution", c_uint32, c_void_p, c_int32, c_int32)
best_fit = function("omb_bestfit", c_uint32, POINTER(c_int32), c_uint32, ctypes.c_char_p)
channel_histogram = function(
    "omb_getchannelhistogram", c_int32, c_void_p, POINTER(c_int32), c_int32
)
get_kernal = function("omb_getKERNAL", POINTER(Record), c_uint32)
