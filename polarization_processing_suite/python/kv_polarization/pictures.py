# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Pictures to look at: intensity, degree and angle of linear polarization, and Stokes ratios.

Each is made of one frame, and has its pixels.
"""

from __future__ import annotations

from typing import Any, NamedTuple, Optional, Tuple

import numpy as np
import numpy.typing as npt

from kv_polarization import _core
from kv_polarization.colours import angle_colours, colormap, ratio_colours
from kv_polarization.frames import Frames
from kv_polarization.processor import Processor

__all__ = [
    "KINDS",
    "Ranges",
    "angle_colours",
    "brightness",
    "colormap",
    "picture",
    "ranges",
    "ratio_colours",
]

#: The names of all kinds of pictures. The last one, `contact_sheet`, shows all others side by side.
KINDS: Tuple[str, ...] = _core.PICTURE_KINDS


class Ranges(NamedTuple):
    """What the pictures of a frame show as white, or in full colour; above 0, up to 1."""

    dolp_white: float  #: of DoLP: its 99th percentile, rounded up to a multiple of 0.05
    ratio_limit: float  #: of S1/S0 and S2/S0, both signs: the same of their magnitudes


def picture(
    kind: str,
    frame: Frames,
    processor: Processor,
    *,
    dolp_white: Optional[float] = None,
    ratio_limit: Optional[float] = None,
    legend: bool = False,
) -> npt.NDArray[np.uint8]:
    """A picture of a frame, uint8 of (rows, columns, 3) in red, green and blue.

    `kind` is one of `KINDS`:

    - `intensity`: grey, encoded for displays as sRGB. White is what one pixel in 500 exceeds.
    - `dolp`: grey, DoLP from 0 to `dolp_white`.
    - `angle`, `angle_light`, `angle_even`, `angle_even_light`: `angle_colours` of the angle, whose
      strength is DoLP from 0 to `dolp_white`.
    - `s1_ratio`, `s2_ratio`: `ratio_colours` of S1/S0 and S2/S0 from -`ratio_limit` to
      `ratio_limit`.
    - `angle_ticks`: intensity under short lines, whose direction is the angle, and whose length is
      DoLP.
    - `contact_sheet`: all of these, with titles and legends; of a size of its own.

    `frame` is (rows, columns) of uint8 or uint16, which `processor` explains; its calibration
    counts, too. `dolp_white` and `ratio_limit`, above 0 and up to 1, are the frame's `ranges` where
    None. `legend` adds columns on the right, which tell units and ranges; pictures too small for a
    legible one stay as they are.

    Throws ValueError for unknown kinds, stacks and ranges that cannot be, and all that
    `Processor.transform` throws.
    """
    rgb: npt.NDArray[np.uint8] = _of(processor).picture(
        frame, kind, dolp_white=dolp_white, ratio_limit=ratio_limit, legend=legend
    )
    return rgb


def ranges(frame: Frames, processor: Processor) -> Ranges:
    """The ranges of a frame's pictures. Throws what `picture` throws."""
    return Ranges(*_of(processor).ranges(frame))


def brightness(frame: Frames, processor: Processor) -> npt.NDArray[np.uint16]:
    """The brightness that intensity pictures show, uint16 of (rows, columns).

    It is the mean of each pixel and its three neighbours, from 0 to 65535 at the samples' full
    scale, in which the mosaic does not show. Unlike the intensity plane it is never clipped. Throws
    what `picture` throws.
    """
    levels: npt.NDArray[np.uint16] = _of(processor).brightness(frame)
    return levels


def _of(processor: Processor) -> Any:
    return processor._core.pictures()
