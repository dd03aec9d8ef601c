"""The planes of frames, as `Processor.transform` hands them out."""

from __future__ import annotations

import dataclasses
from typing import Dict, Optional, Tuple

import numpy as np
import numpy.typing as npt

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
class Planes:
    """The planes of a frame, or of a stack of frames.

    Each is an array of the frames' leading axes, rows and columns, or None where it was not asked
    for. They are the library's planes to the last bit.

    - `intensity`: uint16. S0, half of the sum of a pixel's four samples, from 0 at 0 to `output_max`
      at the samples' full scale; brighter ones are clipped.
    - `stokes_s1`, `stokes_s2`: uint16. S1 = I0 - I90 and S2 = I45 - I135 in the same scale; negative
      ones are 0.
    - `azimuth`: uint16. The angle of linear polarization, from -90 degrees at 0 to 90 degrees at
      `output_max`; 0 degrees lies along the rows, and angles grow counter-clockwise.
    - `dolp`: uint16. The degree of linear polarization, from 0 at 0 to 1 at `output_max`.
    - `normalized_stokes`: float32, with a last axis of two: S1/S0 and S2/S0. NaN or infinite where
      S0 is 0.
    """

    normalized_stokes: Optional[npt.NDArray[np.float32]] = None
    intensity: Optional[npt.NDArray[np.uint16]] = None
    stokes_s1: Optional[npt.NDArray[np.uint16]] = None
    stokes_s2: Optional[npt.NDArray[np.uint16]] = None
    azimuth: Optional[npt.NDArray[np.uint16]] = None
    dolp: Optional[npt.NDArray[np.uint16]] = None
    output_max: int = 65535  #: full scale of the 16-bit planes

    @property
    def names(self) -> Tuple[str, ...]:
        """The names of the planes that are there."""
        return tuple(name for name in PLANES if getattr(self, name) is not None)

    def asdict(self) -> Dict[str, npt.NDArray[np.generic]]:
        """The planes that are there, by their names. The arrays are not copied."""
        return {name: getattr(self, name) for name in self.names}

    def __getitem__(self, name: str) -> npt.NDArray[np.generic]:
        """The plane of that name; KeyError where it was not asked for."""
        return self.asdict()[name]

    def __repr__(self) -> str:
        planes = ", ".join(
            f"{name}: {plane.dtype} {plane.shape}" for name, plane in self.asdict().items()
        )
        return f"Planes({planes}, output_max={self.output_max})"
