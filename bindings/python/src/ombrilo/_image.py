"""Images."""

from __future__ import annotations

import ctypes
import functools
import math
import os
import struct
import weakref
import zlib
from typing import TYPE_CHECKING, Any, Sequence, Tuple, Union

from . import _library as lib
from ._arguments import OPERATIONS, Kernel, arguments_of, kernels, points_of
from ._operations import Operations

if TYPE_CHECKING:
    import numpy as np

__all__ = ["Error", "Image", "Kernel", "bestfit", "kernels"]

Color = Union[str, Tuple[int, int, int]]
Size = Union[str, Tuple[int, int]]
Points = Union[str, Sequence[Tuple[int, int]]]
KernelLike = Union[str, int, Kernel]

# OmbPixels of the C header.
_BIT, _GRAY, _RGB, _RGBA = 1, 8, 25, 33
_METRES_PER_INCH = 0.0254


class Error(Exception):
    """The library refused; the image is as it was."""


def bestfit(points: Points) -> bytes:
    """The smooth curve through points that Image.curve() applies: the output of each level."""
    given = points_of("bestfit", points)
    curve = ctypes.create_string_buffer(256)
    lib.best_fit(given, len(given) // 2, curve)
    return curve.raw


@functools.lru_cache(maxsize=None)
def _function(name: str) -> Any:
    operation = OPERATIONS[name]
    return lib.function(
        operation["function"],
        {"none": None, "image": ctypes.c_void_p}.get(operation["result"], ctypes.c_uint32),
        ctypes.POINTER(ctypes.c_void_p) if operation["replaces"] else ctypes.c_void_p,
        *(lib.NUMBERS.get(a["type"], ctypes.c_void_p) for a in operation["arguments"]),
    )


class _Block:
    """A packed DIB, released with its last user: an image, or an array that shows its pixels."""

    def __init__(self, address: int) -> None:
        self.address = address
        self.views: weakref.WeakSet[_View] = weakref.WeakSet()

    def __del__(self) -> None:
        lib.freedib(self.address)


class _View:
    """What numpy makes an array of; it keeps the block."""

    def __init__(self, block: _Block, interface: dict[str, Any]) -> None:
        self.block = block
        self.__array_interface__ = interface


class Image(Operations):
    """An image of 1, 4, 8, 16, 24 or 32 bits per pixel."""

    def __init__(self, width: int, height: int, bits: int = 24) -> None:
        """An image of pixels 0; at 1, 4 and 8 bits with a gray ramp from black to white."""
        if not (0 < width < 1 << 31 and 0 < height < 1 << 31 and bits in (1, 4, 8, 16, 24, 32)):
            raise ValueError(f"there is no image of {width} x {height} pixels of {bits} bits")
        self._block = self._own(lib.newdib(width, height, bits), "newdib")

    @staticmethod
    def _own(address: int | None, name: str) -> _Block:
        if not address:
            raise Error(f"{name}: there is no memory for it, or it would take 2 GiB or more")
        return _Block(address)

    @classmethod
    def _of(cls, address: int | None, name: str) -> Image:
        image = cls.__new__(cls)
        image._block = cls._own(address, name)
        return image

    @classmethod
    def _from_memory(
        cls, format: int, width: int, height: int, address: int, stride: int, background: Color
    ) -> Image:
        if isinstance(background, str):
            background = (int(background[1:3], 16), int(background[3:5], 16), int(background[5:], 16))
        red, green, blue = background
        color = red | green << 8 | blue << 16
        made = lib.from_pixels(format, width, height, address, stride, color)
        return cls._of(made, "frompixels")

    @classmethod
    def from_array(cls, array: Any, *, background: Color = "#ffffff") -> Image:
        """An image of an array with the picture's upper row first.

        height x width of bool (1 bit: True is white) or uint8 (gray); height x width x 3 or 4 of
        uint8: red, green, blue and alpha, which is laid over the background.
        """
        import numpy as np

        a = np.asarray(array)
        if a.ndim not in (2, 3) or 0 in a.shape:
            raise ValueError(f"an image has 2 or 3 axes and pixels, not the shape {a.shape}")
        height, width = a.shape[:2]
        if a.ndim == 2 and a.dtype == np.bool_:
            a = np.packbits(a, axis=1)
            format = _BIT
        elif a.dtype != np.uint8:
            raise TypeError(f"pixels are uint8 or bool, not {a.dtype}")
        elif a.ndim == 2:
            format = _GRAY
        elif a.shape[2] in (3, 4):
            format = _RGB if a.shape[2] == 3 else _RGBA
        else:
            raise ValueError(f"pixels have 1, 3 or 4 channels, not {a.shape[2]}")
        row = a[0]
        if not row.flags.c_contiguous or abs(a.strides[0]) < row.nbytes:
            a = np.ascontiguousarray(a)
        stride = a.strides[0] if height > 1 else row.nbytes
        return cls._from_memory(format, width, height, a.ctypes.data, stride, background)

    @classmethod
    def from_pillow(cls, picture: Any, *, background: Color = "#ffffff") -> Image:
        """An image of a Pillow image, with its resolution and, of mode P, its palette."""
        mode = picture.mode
        palette: list[int] | None = None
        if mode == "P" and "transparency" not in picture.info:
            palette = picture.getpalette() or []
        elif mode == "P" or mode in ("LA", "PA", "La", "RGBa"):
            picture = picture.convert("RGBA")
        elif mode not in ("1", "L", "RGB", "RGBA"):
            picture = picture.convert("RGB")
        width, height = picture.size
        format = {"1": _BIT, "L": _GRAY, "P": _GRAY, "RGB": _RGB, "RGBA": _RGBA}[picture.mode]
        pixels = picture.tobytes()
        stride = len(pixels) // height
        address = ctypes.cast(ctypes.c_char_p(pixels), ctypes.c_void_p).value or 0
        image = cls._from_memory(format, width, height, address, stride, background)
        if palette is not None:
            image.palette = [
                (palette[i], palette[i + 1], palette[i + 2]) for i in range(0, len(palette) - 2, 3)
            ][:256]
        dpi = picture.info.get("dpi")
        if dpi and all(math.isfinite(d) and 0 < d < 1e6 for d in dpi):
            image.dpi = (float(dpi[0]), float(dpi[1]))
        return image

    @classmethod
    def open(cls, path: str | os.PathLike[str], *, background: Color = "#ffffff") -> Image:
        """Reads a file of any format that Pillow reads."""
        import PIL.Image

        with PIL.Image.open(path) as picture:
            return cls.from_pillow(picture, background=background)

    def to_pillow(self) -> Any:
        """A Pillow image: of mode 1, L, P or RGB."""
        import PIL.Image

        mode, format = "RGB", _RGB
        if self.bits <= 8:
            gray = not self.iscolorful()
            two = gray and self.bits == 1
            mode, format = ("1", _BIT) if two else ("L", _GRAY) if gray else ("P", 0)
        size = (self.width, self.height)
        if mode == "P":
            import numpy as np

            picture = PIL.Image.frombytes("P", size, np.ascontiguousarray(self).tobytes())
            picture.putpalette([channel for color in self.palette for channel in color])
        else:
            picture = PIL.Image.frombytes(mode, size, self._pixels(format))
        if self.dpi:
            picture.info["dpi"] = self.dpi
        return picture

    def save(self, path: str | os.PathLike[str], **options: Any) -> None:
        """Writes a file through Pillow, which takes the options; the resolution goes with it."""
        picture = self.to_pillow()
        if "dpi" in picture.info:
            options.setdefault("dpi", picture.info["dpi"])
        picture.save(path, **options)

    def copy(self) -> Image:
        """Another image with the same pixels, colors and resolution."""
        address, width, height = self._block.address, self.width, self.height
        if self.bits not in (16, 32):
            return self._of(lib.copy_rectangle(address, 0, 0, width, height), "copy")
        made = self._of(lib.newdib(width, height, self.bits), "copy")
        ctypes.memmove(made._block.address, address, self._extent())
        return made

    def _extent(self) -> int:
        bits = lib.find_bits(self._block.address)
        return int(bits - self._block.address + self._stride() * self.height)

    def _stride(self) -> int:
        return (self.width * self.bits + 31) // 32 * 4

    def _pixels(self, format: int) -> bytes:
        row = (self.width * (1 if format == _BIT else format // 8 * 8) + 7) // 8
        pixels = ctypes.create_string_buffer(row * self.height)
        if not lib.to_pixels(self._block.address, format, pixels, row):
            raise Error(f"topixels: {self!r} has no pixels")
        return pixels.raw

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> np.ndarray[Any, Any]:
        """The pixels, upper row first.

        8 bits: the indices; 24 and 32 bits: red, green, blue. Both are views of the image's own
        memory, and what is written there is written into the image, until an operation replaces
        its memory. Copies: of 1 bit as bool (True is light), of 4 bits as indices, of 16 bits as
        red, green, blue.
        """
        import numpy as np

        width, height, bits = self.width, self.height, self.bits
        result: np.ndarray[Any, Any]
        if bits in (8, 24, 32):
            step = bits // 8
            stride = self._stride()
            top = lib.find_bits(self._block.address) + stride * (height - 1)
            interface = {
                "version": 3,
                "typestr": "|u1",
                "shape": (height, width) if bits == 8 else (height, width, 3),
                "strides": (-stride, 1) if bits == 8 else (-stride, step, -1),
                "data": (top + (0 if bits == 8 else 2), False),
            }
            view = _View(self._block, interface)
            self._block.views.add(view)
            result = np.asarray(view)
        elif copy is False:
            raise ValueError(f"pixels of {bits} bits cannot be shown without a copy")
        elif bits == 16:
            result = np.frombuffer(self._pixels(_RGB), np.uint8).reshape(height, width, 3).copy()
        elif bits == 1:
            rows = np.frombuffer(self._pixels(_BIT), np.uint8).reshape(height, -1)
            result = np.unpackbits(rows, axis=1, count=width).view(np.bool_)
        else:
            start = lib.find_bits(self._block.address)
            stored = np.frombuffer(
                ctypes.string_at(start, self._stride() * height), np.uint8
            ).reshape(height, -1)[::-1]
            result = np.stack((stored >> 4, stored & 15), axis=2).reshape(height, -1)[:, :width]
        if dtype is not None:
            result = result.astype(dtype, copy=False)
        return result.copy() if copy else result

    def to_array(self) -> np.ndarray[Any, Any]:
        """A copy of the pixels' colors, upper row first: height x width x 3 of uint8, or height x
        width where all colors are gray."""
        import numpy as np

        gray = not self.iscolorful()
        shape = (self.height, self.width) if gray else (self.height, self.width, 3)
        pixels: np.ndarray[Any, Any] = np.empty(shape, np.uint8)
        format, stride = (_GRAY, shape[1]) if gray else (_RGB, 3 * shape[1])
        if not lib.to_pixels(self._block.address, format, pixels.ctypes.data, stride):
            raise Error(f"topixels: {self!r} has no pixels")
        return pixels

    @property
    def width(self) -> int:
        return int(lib.width(self._block.address))

    @property
    def height(self) -> int:
        return int(lib.height(self._block.address))

    @property
    def size(self) -> tuple[int, int]:
        """Width and height."""
        return self.width, self.height

    @property
    def bits(self) -> int:
        """Bits per pixel."""
        return int(lib.bit_count(self._block.address))

    @property
    def palette(self) -> list[tuple[int, int, int]]:
        """The color table as red, green, blue. A shorter list replaces the first entries."""
        count = lib.num_colors(self._block.address)
        start = lib.find_bits(self._block.address) - lib.palette_size(self._block.address)
        table = ctypes.string_at(start, 4 * count)
        return [(table[i + 2], table[i + 1], table[i]) for i in range(0, 4 * count, 4)]

    @palette.setter
    def palette(self, colors: list[tuple[int, int, int]]) -> None:
        table = b"".join(bytes((blue, green, red, 0)) for red, green, blue in colors)
        if not lib.set_palette(self._block.address, table, len(colors)):
            raise Error(f"palette: {self!r} does not have {len(colors)} colors")

    @property
    def dpi(self) -> tuple[float, float] | None:
        """The resolution, horizontally and vertically; None where it is not known."""
        x, y = struct.unpack("<ii", ctypes.string_at(self._block.address + 24, 8))
        if x <= 0 or y <= 0:
            return None
        return x * _METRES_PER_INCH, y * _METRES_PER_INCH

    @dpi.setter
    def dpi(self, dpi: tuple[float, float] | None) -> None:
        x, y = (round(d / _METRES_PER_INCH) for d in dpi or (0, 0))
        if not lib.set_resolution(self._block.address, x, y):
            raise Error(f"dpi: {dpi} cannot be stored")

    def histogram(self, channel: str = "gray") -> list[int]:
        """How often each value of red, green, blue or gray occurs."""
        numbers = {"red": 1, "green": 2, "blue": 3, "gray": 4}
        if channel not in numbers:
            raise ValueError(f"histogram: the channel is red, green, blue or gray, not {channel!r}")
        counters = (ctypes.c_int32 * 256)()
        # Counting grays changes the image.
        image = self.copy() if channel == "gray" else self
        if not lib.channel_histogram(image._block.address, counters, numbers[channel]):
            raise Error(f"histogram: takes 1, 4, 8 and 24 bits per pixel, not {self.bits}")
        return list(counters)

    def _is_idle(self, idle: str | None, values: dict[str, Any], arguments: list[Any]) -> bool:
        """Whether the image is what an operation would make of it."""
        return (
            (idle == "same_size" and tuple(arguments[:2]) == self.size)
            or (idle == "same_depth" and arguments[0] == self.bits)
            or (idle == "full_turn" and abs(math.fmod(values["degrees"], 360)) < 0.01)
        )

    def _ask(self, function: str) -> int:
        return int(lib.function(function, ctypes.c_int32, ctypes.c_void_p)(self._block.address))

    def _run(self, name: str, given: dict[str, object]) -> Image:
        operation = OPERATIONS[name]
        bits = self.bits
        if bits in (16, 32) and operation["wide"]:
            return self._run(operation["wide"], given)
        if bits not in operation["depths"]:
            hint = "; try transformat" if bits in (16, 32) else ""
            if operation["before"] and not hint:
                hint = f"; try {operation['before']}"
            depths = ", ".join(map(str, operation["depths"]))
            raise Error(f"{name}: takes {depths} bits per pixel, not {bits}{hint}")
        values, arguments = arguments_of(operation, self, given)
        idle = operation["idle"]
        if self._is_idle(idle, values, arguments):
            return self
        function = _function(name)
        if operation["result"] == "image":
            self._block = self._own(function(self._block.address, *arguments), name)
            return self
        if operation["replaces"]:
            status = self._replace(function, arguments)
        else:
            status = function(self._block.address, *arguments)
        if idle == "depth_tells" and bits == 24:
            status = self.bits == 8
        if status == 0 and idle != "always":
            raise Error(f"{name}: refused for {self!r}: {self._reason(operation)}")
        return self

    def _replace(self, function: Any, arguments: list[Any]) -> Any:
        # The library releases the block that it replaces, which arrays may still show.
        block = self.copy()._block if self._block.views else self._block
        address = ctypes.c_void_p(block.address)
        status = function(ctypes.byref(address), *arguments)
        if address.value != block.address:
            block.address = address.value or 0
            self._block = block
        return status

    def _reason(self, operation: dict[str, Any]) -> str:
        if operation["name"] == "crop":
            return "the rectangle is empty or leaves the image"
        if operation["name"] == "pseudocolor":
            return "it has colors; try gray"
        return "memory ran out, the result would take 2 GiB or more, or there is nothing to stretch"

    def __repr__(self) -> str:
        return f"<ombrilo.Image {self.width} x {self.height}, {self.bits} bits>"

    def _repr_png_(self) -> bytes:
        """What a notebook shows."""
        rows, row = self._pixels(_RGB), 3 * self.width

        def chunk(kind: bytes, data: bytes) -> bytes:
            body = kind + data
            return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

        lines = b"".join(b"\0" + rows[y * row : (y + 1) * row] for y in range(self.height))
        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 2, 0, 0, 0)
        return (
            b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(lines, 1))
            + chunk(b"IEND", b"")
        )
