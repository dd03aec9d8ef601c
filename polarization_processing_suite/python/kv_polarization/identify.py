# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Which mosaic a sensor has."""

from __future__ import annotations

import dataclasses
from typing import NamedTuple, Optional, Tuple

from kv_polarization import _core
from kv_polarization.frames import Frames


class MosaicCandidate(NamedTuple):
    """One of the eight mosaics that a sensor can have: four phases, and their mirror images."""

    phase: int  #: 0, 45, 90 or 135: of the sensor's first pixel, by the origin given

    #: With the phase, planes and maps show angles of the turned sign: the image, or the sensor's
    #: wiring, is a mirror image. Turn the image over, or its angles.
    mirrored: bool

    confidence: float  #: probability, if all were equally likely before: 0 to 1


@dataclasses.dataclass(frozen=True)
class MosaicIdentity:
    """What two frames tell of the mosaic. Numbers are NaN where nothing tells them."""

    candidates: Tuple[MosaicCandidate, ...]  #: by falling confidence; four or eight
    is_told: bool  #: whether the first candidate alone is left, with a confidence of 0.99
    verdict: str  #: one line: what was found, or why nothing can be told and what would help
    dolp: Tuple[float, float]  #: degree of linear polarization of each frame
    angle_sigma: Tuple[float, float]  #: degrees; of each frame's angle, by the scatter of cells
    turn: float  #: by which the angle turned, in the sense of phase 0: above -90 up to 90 degrees
    imbalance: float  #: difference of the diagonals' sums over S0: near 0 in a mosaic


def identify_mosaic(
    first: Frames,
    second: Frames,
    *,
    turn: float,
    angle_of_first: Optional[float] = None,
    may_be_mirrored: bool = True,
    origin: Tuple[int, int] = (0, 0),
    region: Optional[Tuple[int, int, int, int]] = None,
    black_level: float = 0,
    angle_error: float = 3,
    bit_depth: Optional[int] = None,
    left_aligned: bool = False,
) -> MosaicIdentity:
    """Which mosaic a sensor has, from two frames of polarized light that was turned in between.

    - `first`, `second`: arrays (rows, columns) of uint8 or uint16, of one size.
    - `turn`: of the light from the first to the second, degrees, counter-clockwise as one sees it
      in the image. 45 is best; multiples of 90 tell nothing of the sense.
    - `angle_of_first`: of the light in the first frame, degrees. Without it a turn leaves two
      phases, and the mirror images of the others.
    - `may_be_mirrored`: whether mirror images are possible.
    - `origin`: column and row on the sensor of the frames' first pixel.
    - `region`: (x, y, width, height) of the light within the frames; all of them where None.
    - `black_level`: counts of a sample in the dark.
    - `angle_error`: standard deviation of what was turned by hand and of what the sensor's
      unevenness does to angles, degrees, above 0.
    - `bit_depth`, `left_aligned`: as for `Processor`; samples at full scale are left out.

    Throws ValueError for frames that differ in size, a region that is not within them or holds no
    2x2 cell, and values out of their range; TypeError for frames of another type.
    """
    found = _core.identify_mosaic(
        first,
        second,
        turn=turn,
        angle_of_first=angle_of_first,
        may_be_mirrored=may_be_mirrored,
        origin=tuple(origin),
        region=region,
        black_level=black_level,
        angle_error=angle_error,
        bit_depth=bit_depth,
        left_aligned=left_aligned,
    )
    candidates = tuple(MosaicCandidate(*candidate) for candidate in found.pop("candidates"))
    return MosaicIdentity(candidates, **found)
