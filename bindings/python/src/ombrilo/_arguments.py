"""Arguments as people write them, made into those of the C functions by the description."""

from __future__ import annotations

import ctypes
import json
import math
import numbers
import pathlib
import re
import time
from typing import TYPE_CHECKING, Any

from . import _library as lib

if TYPE_CHECKING:
    from ._image import Image

DESCRIPTION: dict[str, Any] = json.loads(
    (pathlib.Path(__file__).parent / "operations.json").read_text()
)
OPERATIONS: dict[str, dict[str, Any]] = {o["name"]: o for o in DESCRIPTION["operations"]}


class Kernel:
    """A convolution kernel or a structuring element of one's own.

    weights: rows of whole numbers, the picture's upper row first; None leaves a pixel out
    bias: added to a convolution's results
    anchor: column and row of the pixel that receives the result; the middle without it
    """

    def __init__(
        self, weights: Any, bias: int = 0, anchor: tuple[int, int] | None = None
    ) -> None:
        rows = [list(row) for row in weights]
        if not rows or not rows[0] or any(len(row) != len(rows[0]) for row in rows):
            raise ValueError("a kernel is rows of equal length")
        height, width = len(rows), len(rows[0])
        x, y = anchor or (width // 2, height // 2)
        if not (0 <= x < width and 0 <= y < height):
            raise ValueError("the anchor is a column and a row of the kernel")
        cells = [
            (column - x, y - row, int(weight))
            for row, line in enumerate(rows)
            for column, weight in enumerate(line)
            if weight is not None
        ]
        self._offsets = (ctypes.c_int32 * (2 * len(cells)))(*(v for c in cells for v in c[:2]))
        self._weights = (ctypes.c_int32 * len(cells))(*(c[2] for c in cells))
        # In the record, rows count upwards from the anchor.
        self._record = lib.Record(
            width, height, x, y, len(cells), bias, self._offsets, b"", self._weights
        )


def kernels() -> list[str]:
    """The names of the built-in kernels and shapes, in the order of their numbers."""
    names: list[str] = []
    while record := lib.get_kernal(len(names)):
        names.append(record.contents.name.decode().strip())
    return names


def _value(operation: str, parameter: dict[str, Any], given: Any) -> Any:
    """A parameter's value, checked: a number, except of texts."""

    def wrong() -> ValueError:
        return ValueError(
            f"{operation}: '{parameter['name']}' must be {parameter['form']}, not {given!r}"
        )

    kind, named = parameter["type"], parameter.get("values", [])
    if isinstance(given, str) and kind != "text":
        for value in named:
            if value["name"].lower() == given.lower():
                return value["value"]
    if kind == "color":
        if isinstance(given, str) and re.fullmatch("#[0-9a-fA-F]{6}", given):
            given = tuple(bytes.fromhex(given[1:]))
        if not (isinstance(given, tuple) and len(given) == 3):
            raise wrong()
        red, green, blue = (int(c) for c in given)
        if not all(0 <= c <= 255 for c in (red, green, blue)):
            raise wrong()
        return red | green << 8 | blue << 16
    if kind == "text":
        return given
    if isinstance(given, bool) or not isinstance(given, numbers.Real):
        raise wrong()
    if kind == "number":
        if not (parameter["minimum"] <= given <= parameter["maximum"]):
            raise wrong()
        return float(given)
    if not isinstance(given, numbers.Integral):
        raise wrong()
    if kind == "choice":
        if int(given) not in [v["value"] for v in named]:
            raise wrong()
    elif not (parameter["minimum"] <= given <= parameter["maximum"]):
        raise wrong()
    return int(given)


def _size(operation: str, image: Image, given: Any) -> tuple[int, int]:
    def scaled(side: int, factor: float) -> int:
        # Halves round up, as in `omb`.
        return max(1, math.floor(side * factor + 0.5))

    wrong = ValueError(
        f"{operation}: 'size' must be a size such as '800x600', '800x', 'x600', '50%' or "
        f"(800, 600), not {given!r}"
    )
    if isinstance(given, tuple) and len(given) == 2:
        width, height = (int(side) for side in given)
    elif isinstance(given, str) and (match := re.fullmatch(r"(\d+(?:\.\d*)?)%", given)):
        factor = float(match[1]) / 100
        width, height = scaled(image.width, factor), scaled(image.height, factor)
        if factor <= 0:
            raise wrong
    elif isinstance(given, str) and (match := re.fullmatch(r"(\d*)[xX](\d*)", given)):
        if given in ("x", "X"):
            raise wrong
        width = int(match[1] or scaled(image.width, int(match[2] or 0) / image.height))
        height = int(match[2] or scaled(image.height, width / image.width))
    else:
        raise wrong
    if not (1 <= width <= 1_000_000 and 1 <= height <= 1_000_000):
        raise wrong
    return width, height


def points_of(name: str, given: Any) -> Any:
    """The C function's points, of pairs or of text such as "0:0/64:48/255:255"."""
    if isinstance(given, str):
        pairs = [part.split(":") for part in given.split("/")]
    else:
        pairs = [list(pair) for pair in given]
    try:
        numbers = [int(level) for x, y in pairs for level in (x, y)]
    except (TypeError, ValueError):
        numbers = []
    rising = all(a < b for a, b in zip(numbers[::2], numbers[2::2]))
    if not numbers or not rising or min(numbers) < 0 or max(numbers) > 255:
        raise ValueError(
            f"{name}: 'points' must be levels from 0 to 255 from dark to light, such as "
            f"[(0, 0), (64, 48), (255, 255)] or '0:0/64:48/255:255', not {given!r}"
        )
    return (ctypes.c_int32 * len(numbers))(*numbers)


def _block(image: Image, blocks: int) -> int:
    """-1 takes what suits pages: a twelfth of the width."""
    return min(max(image.width // 12, 16), 32767) if blocks == -1 else blocks


def _kernel(operation: str, given: Any) -> Any:
    if isinstance(given, Kernel):
        return ctypes.byref(given._record)
    names = [name.lower() for name in kernels()]
    if isinstance(given, str) and given.strip().lower() in names:
        return lib.get_kernal(names.index(given.strip().lower()))
    if isinstance(given, int) and 0 <= given < len(names):
        return lib.get_kernal(given)
    raise ValueError(f"{operation}: there is no kernel {given!r}; ombrilo.kernels() names them")


def _page_size(operation: str, values: dict[str, Any]) -> int:
    side, higauss = values["size"], operation == "enhancepage" and values["filter"] == 3
    if higauss and side == 3:
        raise ValueError("enhancepage: higauss comes in 5x5, 7x7 and 9x9")
    if side == 9 and not higauss:
        raise ValueError("enhancepage: only higauss comes in 9x9")
    return int(side - (5 if higauss else 3)) // 2


def _ramp(image: Image, number: int) -> Any:
    """Each entry of the image's table gets the ramp's color for its own gray level."""
    stops = list(DESCRIPTION["ramps"].values())[number]
    parts = len(stops) - 1
    table = bytearray()
    for level, _, _ in image.palette:
        first = parts - 1 if level == 255 else level * parts // 255
        share = level * parts - first * 255
        for shift in (0, 8, 16):
            a, b = stops[first] >> shift & 255, stops[first + 1] >> shift & 255
            table.append((a * (255 - share) + b * share + 127) // 255)
        table.append(0)
    return bytes(table)


def _otsu(image: Image) -> int:
    """The threshold that parts dark from light best (N. Otsu, 1979), as `omb` takes it."""
    counts = image.histogram("gray")
    total, whole = sum(counts), sum(level * n for level, n in enumerate(counts))
    dark = dark_sum = best = 0.0
    threshold = 127
    for level, count in enumerate(counts[:255]):
        dark += count
        dark_sum += count * level
        if dark in (0, total):
            continue
        difference = dark_sum / dark - (whole - dark_sum) / (total - dark)
        variance = dark * (total - dark) * difference * difference
        if variance > best:
            best, threshold = variance, level
    # Above 128 the library takes the threshold itself for light.
    return threshold if threshold < 128 else threshold + 1


def arguments_of(
    operation: dict[str, Any], image: Image, given: dict[str, object]
) -> tuple[dict[str, Any], list[Any]]:
    """The values by name, and the C function's arguments."""
    name = operation["name"]
    values = {p["name"]: _value(name, p, given[p["name"]]) for p in operation["parameters"]}
    arguments: list[Any] = []
    for argument in operation["arguments"]:
        convert = argument["convert"]
        value: Any = values.get(argument.get("parameter"))
        if convert == "constant":
            value = argument["value"]
        elif convert == "depth":
            value = image.bits
        elif convert == "threshold" and value in (-1, -2):
            value = image.autothreshold() if value == -1 else _otsu(image)
        elif convert == "seed" and value == -1:
            value = time.time_ns()
        elif convert == "square" and value == 0:
            value = values["width"]
        elif convert in ("width", "height"):
            value = _size(name, image, value)[convert == "height"]
        elif convert == "page_size":
            value = _page_size(name, values)
        elif convert == "kernel":
            value = _kernel(name, value)
        elif convert == "points":
            value = points_of(name, value)
        elif convert == "count":
            value = len(points_of(name, value)) // 2
        elif convert == "block":
            value = _block(image, value)
        elif convert == "scope":
            value = 0 if value == 0 else 1
        elif convert == "ramp":
            value = _ramp(image, values["ramp"])
        elif convert == "rectangle":
            edges = [values[p] for p in argument["parameters"]]
            value = ctypes.byref(lib.Rectangle(*edges))
        arguments.append(value)
    return values, arguments
