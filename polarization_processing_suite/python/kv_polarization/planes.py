# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""The planes of frames, as `Processor.transform` hands them out."""

from __future__ import annotations

import dataclasses
from typing import ClassVar, Optional, Tuple

import numpy as np
import numpy.typing as npt

from kv_polarization.colours import angle_colours, ratio_colours
from kv_polarization.named_arrays import NamedArrays
from kv_polarization.thumbnails import Row, encoded, grey

#: The names of all planes.
PLANES: Tuple[str, ...] = (
    "normalized_stokes",
    "intensity",
    "stokes_s1",
    "stokes_s2",
    "azimuth",
    "dolp",
)


@dataclasses.dataclass(frozen=True, eq=False, repr=False)
class Planes(NamedArrays):
    """The planes of a frame, or of a stack of frames.

    Each is an array of the frames' leading axes, rows and columns, or None where it was not asked
    for. They are the library's planes to the last bit.

    - `intensity`: uint16. S0, half of the sum of a pixel's four samples, from 0 at 0 to
      `output_max` at the samples' full scale; brighter ones are clipped.
    - `stokes_s1`, `stokes_s2`: uint16. S1 = I0 - I90 and S2 = I45 - I135 in the same scale;
      negative ones are 0.
    - `azimuth`: uint16. The angle of linear polarization, from -90 degrees at 0 to 90 degrees at
      `output_max`; 0 degrees lies along the rows, and angles grow counter-clockwise.
    - `dolp`: uint16. The degree of linear polarization, from 0 at 0 to 1 at `output_max`.
    - `normalized_stokes`: float32, with a last axis of two: S1/S0 and S2/S0. NaN or infinite where
      S0 is 0.
    """

    NAMES: ClassVar[Tuple[str, ...]] = PLANES

    normalized_stokes: Optional[npt.NDArray[np.float32]] = None
    intensity: Optional[npt.NDArray[np.uint16]] = None
    stokes_s1: Optional[npt.NDArray[np.uint16]] = None
    stokes_s2: Optional[npt.NDArray[np.uint16]] = None
    azimuth: Optional[npt.NDArray[np.uint16]] = None
    dolp: Optional[npt.NDArray[np.uint16]] = None
    output_max: int = 65535  #: full scale of the 16-bit planes

    def __repr__(self) -> str:
        return f"{super().__repr__()[:-1]}, output_max={self.output_max})"

    def _row(self, name: str) -> Row:
        plane, scale = self[name], f"as 0 to {self.output_max}"
        if name == "normalized_stokes":
            meaning = "S1/S0 and S2/S0; the picture shows S1/S0 from -1, blue, to 1, red"
            return Row(name, plane, meaning, lambda pairs: ratio_colours(pairs[..., 0]), True)
        if name == "azimuth":
            degrees = 180 / self.output_max
            return Row(
                name,
                plane,
                f"angle of linear polarization, -90° to 90° {scale}",
                lambda levels: angle_colours(levels * degrees - 90),
            )
        if name == "dolp":
            return Row(name, plane, f"degree of linear polarization, 0 to 1 {scale}", grey)
        stokes = {"intensity": "S0", "stokes_s1": "S1 above 0", "stokes_s2": "S2 above 0"}[name]
        return Row(name, plane, f"{stokes}, 0 to full scale {scale}", encoded)
