# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Measurements of every pixel and of regions, as a `Processor` hands them out."""

from __future__ import annotations

import dataclasses
import enum
from typing import ClassVar, Dict, NamedTuple, Optional, Tuple, Union

import numpy as np
import numpy.typing as npt

from kv_polarization.colours import angle_colours
from kv_polarization.named_arrays import NamedArrays
from kv_polarization.thumbnails import ColourFunction, Row, encoded, grey, signed

FloatMap = npt.NDArray[np.float32]

#: The names of all maps.
MAPS: Tuple[str, ...] = (
    "s0",
    "s1",
    "s2",
    "dolp",
    "angle",
    "debiased_dolp",
    "s0_sigma",
    "s1_sigma",
    "s2_sigma",
    "dolp_sigma",
    "angle_sigma",
    "quality",
)


class Quality(enum.IntFlag):
    """Why not to believe a pixel: bits of the map `quality`, 0 for a pixel without fault.

    A pixel is made of the four samples of its 2x2 neighbourhood. `CLIPPED` and `BAD_PIXEL` are told
    where they are true of any of them.
    """

    CLIPPED = 1  #: a sample is at the clip level or above: Stokes values too low, angle wrong
    RESCUED = 2  #: the one clipped or bad sample was rebuilt from the others
    DARK = 4  #: S0 is not above 0; DoLP and angle are NaN
    DOLP_ABOVE_1 = 8  #: more polarized than light can be: noise, an edge, or an uneven sensor
    BELOW_NOISE = 16  #: DoLP is less than 3 of its standard deviations; wants the noise
    BAD_PIXEL = 32  #: a sample is of a pixel that is known to be bad
    NOT_COMPENSATED = 64  #: too dark to be compensated; told only with intensity compensation


class Stokes(NamedTuple):
    """The Stokes values of every pixel: float32, counts above black."""

    s0: FloatMap
    s1: FloatMap
    s2: FloatMap


@dataclasses.dataclass(frozen=True, eq=False, repr=False)
class Maps(NamedArrays):
    """Measurements of every pixel of a frame, or of a stack of frames.

    Each is an array of the frames' leading axes, rows and columns, or None where it was not asked
    for; all but `quality` are of float32. Counts are those of raw frames, with a calibration too.

    With I0 to I135, the four samples of the 2x2 neighbourhood that begins at a pixel, less the
    black level:

    - `s0`: (I0 + I45 + I90 + I135) / 2, counts.
    - `s1`, `s2`: I0 - I90 and I45 - I135, counts.
    - `dolp`: the degree of linear polarization, sqrt(S1^2 + S2^2) / S0, from 0 up; noise can take
      it above 1. NaN where S0 is not above 0.
    - `angle`: of linear polarization, degrees above -90 up to 90, 0 along the rows, growing
      counter-clockwise. NaN where S0 is not above 0; 0 where S1 and S2 are 0.
    - `debiased_dolp`: DoLP without what noise adds to it on average.
    - `s0_sigma`, `s1_sigma`, `s2_sigma`: standard deviations by the noise of the samples, counts.
    - `dolp_sigma`: within 4 per cent where DoLP is above 3 sigma; too great below.
    - `angle_sigma`: degrees. NaN where DoLP is less than 3 sigma: the angle is anybody's guess.
    - `quality`: uint8, the bits of `Quality`.
    """

    NAMES: ClassVar[Tuple[str, ...]] = MAPS

    s0: Optional[FloatMap] = None
    s1: Optional[FloatMap] = None
    s2: Optional[FloatMap] = None
    dolp: Optional[FloatMap] = None
    angle: Optional[FloatMap] = None
    debiased_dolp: Optional[FloatMap] = None
    s0_sigma: Optional[FloatMap] = None
    s1_sigma: Optional[FloatMap] = None
    s2_sigma: Optional[FloatMap] = None
    dolp_sigma: Optional[FloatMap] = None
    angle_sigma: Optional[FloatMap] = None
    quality: Optional[npt.NDArray[np.uint8]] = None

    def _row(self, name: str) -> Row:
        return Row(name, self[name], *_SHOWN.get(name, ("standard deviation in counts", grey)))


def _flagged(quality: npt.NDArray[np.uint8]) -> npt.NDArray[np.uint8]:
    return grey(quality > 0)


#: What maps mean, and their colours; those of standard deviations in counts are left out.
_SHOWN: Dict[str, Tuple[str, ColourFunction]] = {
    "s0": ("counts above black", encoded),
    "s1": ("counts", signed),
    "s2": ("counts", signed),
    "dolp": ("degree of linear polarization, 0 up", grey),
    "angle": ("angle of linear polarization, -90° to 90°", angle_colours),
    "debiased_dolp": ("degree of linear polarization, 0 up", grey),
    "dolp_sigma": ("standard deviation", grey),
    "angle_sigma": ("standard deviation in degrees", grey),
    "quality": ("bits of Quality; the picture shows pixels with any", _flagged),
}

Counts = Union[np.int64, npt.NDArray[np.int64]]
Values = Union[np.float64, npt.NDArray[np.float64]]


@dataclasses.dataclass(frozen=True, eq=False)
class RegionMeans:
    """The light of a region as one measurement, of a frame or of each frame of a stack.

    Stokes values are added up first, DoLP and angle are those of the sum: a mean of angles is no
    angle. Each is an array of the frames' leading axes, or a number of numpy for a single frame.

    A region is counted in whole 2x2 cells that share no sample. Cells with a bad pixel, or clipped
    ones that could not be rescued, are left out.

    Means of the cells counted are in counts above black; NaN without cells. DoLP and angle are NaN
    where S0 is not above 0, too. Standard deviations and the debiased DoLP are by the noise of the
    samples, and NaN where it is not known: what differs within the region is not in them.
    """

    cells: Counts  #: counted
    left_out: Counts  #: cells of the region that were not counted
    clipped: Counts  #: cells with a clipped sample, rescued or not
    rescued: Counts  #: of these, the rescued ones; they are counted
    bad: Counts  #: cells with a bad pixel that its calibration did not solve
    s0: Values  #: counts
    s1: Values  #: counts
    s2: Values  #: counts
    dolp: Values
    angle: Values  #: degrees, above -90 up to 90
    debiased_dolp: Values
    s0_sigma: Values  #: counts
    s1_sigma: Values  #: counts
    s2_sigma: Values  #: counts
    dolp_sigma: Values
    angle_sigma: Values  #: degrees; NaN where DoLP is less than 3 of its sigma
