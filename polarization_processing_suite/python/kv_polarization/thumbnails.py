# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Tables of arrays with small pictures, for notebooks."""

from __future__ import annotations

import base64
import struct
import zlib
from html import escape
from typing import Any, Callable, Iterable, NamedTuple

import numpy as np
import numpy.typing as npt

from kv_polarization.colours import Colours, ratio_colours

#: Pixels of a thumbnail's longer side, at most.
LARGEST_SIDE = 200

#: From an array of one frame, (rows, columns), to uint8 (rows, columns, 3).
ColourFunction = Callable[[npt.NDArray[Any]], Colours]


class Row(NamedTuple):
    """An array (..., rows, columns), or (..., rows, columns, channels), and how to show it."""

    name: str
    array: npt.NDArray[Any]
    meaning: str  #: what its values stand for, with unit and range
    colours: ColourFunction
    has_channels: bool = False


def thumbnail_table(title: str, rows: Iterable[Row]) -> str:
    """HTML with a line for each array: thumbnail, name, dtype, shape and meaning.

    Thumbnails show the first frame of a stack, of which they take every n-th pixel of every n-th
    row. Texts may hold anything; nothing of them is taken for HTML.
    """
    lines = "".join(
        "<tr>"
        + "".join(f"<td style='text-align:left'>{cell}</td>" for cell in _cells(row))
        + "</tr>"
        for row in rows
    )
    heads = "".join(
        f"<th style='text-align:left'>{head}</th>"
        for head in ("", "name", "dtype", "shape", "values")
    )
    return (
        f"<table><caption style='text-align:left'>{escape(title)}</caption>"
        f"<thead><tr>{heads}</tr></thead><tbody>{lines}</tbody></table>"
    )


def grey(values: npt.NDArray[Any]) -> Colours:
    """Grey from 0, black, to white, which one pixel in 500 exceeds; NaN is black."""
    return _repeated(_shares(values))


def encoded(values: npt.NDArray[Any]) -> Colours:
    """Such grey for light, as displays encode it."""
    return _repeated(np.clip(_shares(values), 0, 1) ** (1 / 2.2))


def signed(values: npt.NDArray[Any]) -> Colours:
    """From blue over grey, which is 0 and NaN, to red, as far as but one pixel in 500 goes."""
    return ratio_colours(_shares(values))


def _shares(values: npt.NDArray[Any]) -> npt.NDArray[np.float32]:
    """Of the greatest values."""
    known = np.nan_to_num(np.asarray(values, np.float32), posinf=0, neginf=0)
    return known / (float(np.percentile(np.abs(known), 99.8)) or 1)


def _repeated(shares: npt.NDArray[np.float32]) -> Colours:
    levels = np.rint(255 * np.clip(shares, 0, 1)).astype(np.uint8)
    return np.repeat(levels[..., None], 3, axis=-1)


def _cells(row: Row) -> Iterable[str]:
    yield _image(row)
    yield escape(row.name)
    yield escape(str(row.array.dtype))
    yield escape(" × ".join(map(str, row.array.shape)))
    yield escape(row.meaning)


def _image(row: Row) -> str:
    axes = 3 if row.has_channels else 2
    if row.array.size == 0:
        return "–"
    first = row.array[(0,) * (row.array.ndim - axes)]
    step = -(-max(first.shape[:2]) // LARGEST_SIDE)
    data = base64.b64encode(_png(row.colours(first[::step, ::step]))).decode()
    return f"<img alt='{escape(row.name)}' src='data:image/png;base64,{data}'>"


def _png(picture: Colours) -> bytes:
    """A file of PNG: 8 bits, RGB, rows without a filter."""
    height, width, _ = picture.shape
    rows = np.zeros((height, 1 + 3 * width), np.uint8)
    rows[:, 1:] = picture.reshape(height, -1)
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + b"".join(
        _chunk(kind, data)
        for kind, data in (
            (b"IHDR", header),
            (b"IDAT", zlib.compress(rows.tobytes())),
            (b"IEND", b""),
        )
    )


def _chunk(kind: bytes, data: bytes) -> bytes:
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
