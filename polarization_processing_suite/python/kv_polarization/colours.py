# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""The colours of angles and of Stokes ratios, as pictures have them."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from kv_polarization import _core

Colours = npt.NDArray[np.uint8]


def angle_colours(
    degrees: npt.ArrayLike, strength: npt.ArrayLike = 1.0, *, kind: str = "angle"
) -> Colours:
    """The colours of angles of linear polarization, uint8 with a last axis of red, green, blue.

    `degrees` are of any shape, and once round in 180: 0, along the rows, is red, and
    counter-clockwise 45 is yellow-green, 90 cyan, 135 violet. `strength`, which broadcasts with
    them, is DoLP as a share of that in full colour, from 0 to 1, and clipped there. NaN angles and
    strengths are shown as unpolarized.

    `kind` is that of the picture: `"angle"`, on black; `"angle_light"`, on white; `"angle_even"`
    and `"angle_even_light"`, with hues of one lightness, where equal steps of angle look alike.
    """
    angles, strengths = np.broadcast_arrays(degrees, strength)
    colours: Colours = _core.angle_colours(angles, strengths, kind)
    return colours


def ratio_colours(ratio: npt.ArrayLike) -> Colours:
    """The diverging colours of S1/S0 and S2/S0, uint8 with a last axis of red, green, blue.

    From -1, blue, over 0 and NaN, a light grey, to 1, red; clipped there.
    """
    colours: Colours = _core.ratio_colours(np.asarray(ratio))
    return colours


def colormap(entries: int = 256, *, kind: str = "angle") -> Colours:
    """A table of `angle_colours` from -90 degrees up to, but without, 90: (entries, 3).

    For levels of an azimuth plane it is `colormap()[azimuth * 256 // (output_max + 1)]`.
    """
    steps: npt.NDArray[Any] = np.arange(entries)
    return angle_colours(steps * (180 / entries) - 90, kind=kind)
