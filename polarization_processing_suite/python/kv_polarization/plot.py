# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Figures of frames with matplotlib, which this module alone needs.

Each function draws into the axes that it is given, or into those of a new figure, and returns them.
Axes count the frame's pixels from the top left one; angles grow counter-clockwise as one sees them.
`frame` is (rows, columns), and `processor` explains it, as for `pictures.picture`; all throw what
that throws.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Optional, Tuple

import numpy as np
import numpy.typing as npt

from kv_polarization import pictures
from kv_polarization.frames import Frames
from kv_polarization.processor import Processor

try:
    from matplotlib import pyplot as plt
    from matplotlib.collections import LineCollection
    from matplotlib.colors import PowerNorm

    from kv_polarization import _legends
except ImportError as error:
    raise ImportError("kv_polarization.plot needs matplotlib: pip install matplotlib") from error

if TYPE_CHECKING:
    from matplotlib.axes import Axes
    from matplotlib.figure import Figure

__all__ = ["angle", "dolp", "intensity", "sheet", "ticks"]

_LONGEST_TICK = 0.9  # of a cell
# Inches for a legend and its texts beside an image.
_BAR = 0.9
_WHEEL = 1.9
_DISPLAY_GAMMA = 2.2  # that of sRGB, nearly: light comes out as it was

Floats = npt.NDArray[np.float64]


def intensity(frame: Frames, processor: Processor, ax: Optional[Axes] = None) -> Axes:
    """The brightness in per cent of full scale, with a colour bar.

    White is what one pixel in 500 exceeds; what lies between is shown as displays encode light.
    """
    return _intensity(frame, processor, ax, bar=True)


def dolp(
    frame: Frames,
    processor: Processor,
    ax: Optional[Axes] = None,
    dolp_white: Optional[float] = None,
    *,
    cmap: str = "viridis",
) -> Axes:
    """DoLP from 0 to `dolp_white`, the frame's range where None, with a colour bar."""
    white = _white(frame, processor, dolp_white)
    levels = processor.transform(frame, "dolp").dolp
    assert levels is not None
    ax = _axes(frame, ax, "Degree of linear polarization", _BAR)
    image = ax.imshow(levels / np.float32(65535), cmap=cmap, vmin=0, vmax=white)
    _legends.colour_bar(ax, image, "DoLP")
    return ax


def angle(
    frame: Frames,
    processor: Processor,
    ax: Optional[Axes] = None,
    dolp_white: Optional[float] = None,
    *,
    kind: str = "angle",
) -> Axes:
    """The angle of linear polarization as hue, with a colour wheel.

    DoLP from 0 to `dolp_white`, the frame's range where None, is how strong the hue is. `kind` is
    one of `"angle"`, `"angle_light"`, `"angle_even"` and `"angle_even_light"`. The wheel is the
    last one of the axes' `child_axes`.
    """
    white = _white(frame, processor, dolp_white)
    pictures.angle_colours(0, kind=kind)
    rgb = pictures.picture(kind, frame, processor, dolp_white=white)
    ax = _axes(frame, ax, "Angle of linear polarization", _WHEEL)
    ax.imshow(rgb)
    _legends.colour_wheel(ax, white, kind)
    return ax


def ticks(
    frame: Frames,
    processor: Processor,
    ax: Optional[Axes] = None,
    dolp_white: Optional[float] = None,
    *,
    spacing: Optional[int] = None,
) -> Axes:
    """Short lines along the angle of linear polarization, over the intensity.

    Each stands for the mean Stokes values of `spacing` x `spacing` pixels, some 32 in a row where
    None; its length for their DoLP, nearly a whole cell at `dolp_white`, the frame's range where
    None. The lines are the first one of the axes' `collections`.
    """
    white = _white(frame, processor, dolp_white)
    cell = max(12, max(frame.shape) // 32) if spacing is None else spacing
    if cell < 1:
        raise ValueError(f"spacing must be 1 pixel or more, not {cell}")
    cell = min(cell, *frame.shape)
    ax = _intensity(frame, processor, ax, bar=False)
    ax.set_title("Angle ticks over intensity", loc="left")
    lines = LineCollection(_tick_lines(frame, processor, cell, white), **_legends.TICK_STYLE)
    ax.add_collection(lines, autolim=False)
    _legends.tick_key(ax, _LONGEST_TICK * cell, white)
    return ax


def sheet(
    frame: Frames,
    processor: Processor,
    dolp_white: Optional[float] = None,
    *,
    title: str = "",
) -> Figure:
    """A figure of intensity, DoLP, angle and ticks, whose axes are zoomed together."""
    white = _white(frame, processor, dolp_white)
    width, height = _image_inches(frame)
    size = (2 * width + _BAR + _WHEEL + 1.2, 2 * (height + 0.7))
    figure, axes = plt.subplots(2, 2, figsize=size, sharex=True, sharey=True, layout="constrained")
    intensity(frame, processor, axes[0, 0])
    dolp(frame, processor, axes[0, 1], white)
    ticks(frame, processor, axes[1, 0], white)
    angle(frame, processor, axes[1, 1], white)
    for ax in axes.flat:
        ax.label_outer()
    if title:
        figure.suptitle(title)
    return figure


def _image_inches(frame: Frames) -> Tuple[float, float]:
    """Room for an image and its title in a new figure."""
    rows, columns = frame.shape
    width = 4.8 * min(1, 1.5 * columns / rows)
    return max(width, 2.4), max(width * rows / columns, 1.5)


def _axes(frame: Frames, ax: Optional[Axes], title: str, beside: float) -> Axes:
    """The axes with their texts; new ones have so many inches on their right for a legend."""
    if ax is None:
        width, height = _image_inches(frame)
        _, ax = plt.subplots(figsize=(width + 0.8 + beside, height + 0.7), layout="constrained")
    ax.set_title(title, loc="left")
    ax.set_xlabel("column in pixels")
    ax.set_ylabel("row in pixels")
    return ax


def _white(frame: Frames, processor: Processor, given: Optional[float]) -> float:
    if given is None:
        return pictures.ranges(frame, processor).dolp_white
    if not 0 < given <= 1:
        raise ValueError(f"dolp_white must be above 0, up to 1, not {given}")
    return given


def _intensity(frame: Frames, processor: Processor, ax: Optional[Axes], bar: bool) -> Axes:
    shares = pictures.brightness(frame, processor) / np.float32(655.35)
    white = max(float(np.percentile(shares, 99.8)), 0.01)
    ax = _axes(frame, ax, "Intensity", _BAR if bar else 0)
    image = ax.imshow(shares, cmap="gray", norm=PowerNorm(1 / _DISPLAY_GAMMA, 0, white))
    if bar:
        _legends.colour_bar(ax, image, "% of full scale")
    return ax


def _cells(levels: npt.NDArray[Any], cell: int) -> Floats:
    """Sums over the whole cells in the middle of the frame."""
    rows, columns = levels.shape
    top, left = rows % cell // 2, columns % cell // 2
    whole = levels[top : top + rows // cell * cell, left : left + columns // cell * cell]
    blocks = whole.reshape(rows // cell, cell, columns // cell, cell)
    sums: Floats = blocks.sum(axis=(1, 3), dtype=np.float64)
    return sums


def _tick_lines(frame: Frames, processor: Processor, cell: int, white: float) -> Floats:
    """The ends (x, y) of each tick, (ticks, 2, 2), in pixels."""
    ratios = processor.transform(frame, "normalized_stokes").normalized_stokes
    assert ratios is not None
    lit = np.isfinite(ratios).all(axis=-1)
    s0 = np.where(lit, pictures.brightness(frame, processor), np.float32(0))
    known = np.where(lit[..., None], ratios, np.float32(0))
    sums = [_cells(part, cell) for part in (s0, s0 * known[..., 0], s0 * known[..., 1])]
    row, column = np.nonzero(sums[0])
    s0, s1, s2 = (part[row, column] for part in sums)
    half = _LONGEST_TICK / 2 * cell * np.minimum(np.hypot(s1, s2) / s0 / white, 1)
    direction = np.arctan2(s2, s1) / 2
    rows, columns = frame.shape
    centre_x = columns % cell // 2 + (column + 0.5) * cell - 0.5
    centre_y = rows % cell // 2 + (row + 0.5) * cell - 0.5
    right, down = half * np.cos(direction), -half * np.sin(direction)
    ends: Floats = np.stack(
        (
            np.stack((centre_x - right, centre_y - down), axis=-1),
            np.stack((centre_x + right, centre_y + down), axis=-1),
        ),
        axis=1,
    )
    return ends
