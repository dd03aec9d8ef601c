# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""What a `Processor` measures in frames, beside their planes."""

from __future__ import annotations

from typing import Any, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from kv_polarization.frames import Frames, thread_count
from kv_polarization.maps import FloatMap, Maps, RegionMeans, Stokes
from kv_polarization.named_arrays import Out, in_order

_SIGMAS = ("s0_sigma", "s1_sigma", "s2_sigma", "dolp_sigma", "angle_sigma")


class Measures:
    """The measuring half of `Processor`, which tells what frames are, and how to understand them.

    `frames` are arrays (..., rows, columns) of uint8 or uint16, `threads` how many of them work at
    most, all that the process may use where None; results do not depend on it. All functions throw
    TypeError for arrays of another type and ValueError for what cannot be measured, before anything
    is computed.
    """

    _core: Any

    def maps(
        self,
        frames: Frames,
        maps: Union[str, Sequence[str]] = ("s0", "dolp", "angle"),
        out: Out = None,
        threads: Optional[int] = None,
    ) -> Maps:
        """Measurements of every pixel: those of the names, of `MAPS`.

        `out` gives arrays to fill, of the exact dtype and shape: a `Maps` or a mapping of names, a
        sequence in the order of `maps`, or one array for one map. They may share no memory with
        each other or with the frames.

        Standard deviations and `debiased_dolp` want the noise of the sensor, by `noise` or by a
        calibration. `Maps` tells the units and ranges of all.
        """
        names = (maps,) if isinstance(maps, str) else tuple(maps)
        arrays = self._core.maps(frames, names, in_order(names, out), thread_count(threads))
        return Maps(**dict(zip(names, arrays)))

    def stokes(self, frames: Frames, threads: Optional[int] = None) -> Stokes:
        """S0, S1 and S2 of every pixel: three float32 arrays of the frames' shape, in counts."""
        return Stokes(*self.maps(frames, Stokes._fields, threads=threads).asdict().values())

    def dolp(
        self, frames: Frames, debias: bool = False, threads: Optional[int] = None
    ) -> FloatMap:
        """The degree of linear polarization of every pixel: float32 from 0 up, NaN where S0 <= 0.

        With `debias`, which wants the noise, without what noise adds to it on average.
        """
        name = "debiased_dolp" if debias else "dolp"
        return self.maps(frames, name, threads=threads)[name]

    def angle(self, frames: Frames, threads: Optional[int] = None) -> FloatMap:
        """The angle of linear polarization of every pixel: float32, degrees above -90 up to 90.

        0 lies along the rows, and angles grow counter-clockwise. NaN where S0 <= 0.
        """
        return self.maps(frames, "angle", threads=threads)["angle"]

    def sigma(self, frames: Frames, threads: Optional[int] = None) -> Maps:
        """The standard deviations of every pixel's S0, S1, S2, DoLP and angle; wants the noise."""
        return self.maps(frames, _SIGMAS, threads=threads)

    def flags(self, frames: Frames, threads: Optional[int] = None) -> npt.NDArray[np.uint8]:
        """Why not to believe a pixel: the bits of `Quality`, uint8, 0 for one without fault."""
        return self.maps(frames, "quality", threads=threads)["quality"]

    def region(
        self,
        frames: Frames,
        region: Optional[Tuple[int, int, int, int]] = None,
        *,
        mask: Optional[npt.NDArray[Union[np.bool_, np.uint8]]] = None,
        threads: Optional[int] = None,
    ) -> RegionMeans:
        """The light of a region as one measurement, in every frame.

        `region` is (x, y, width, height), pixels from the frames' first one on, whose cells begin
        at its upper left pixel. `mask` is an array (rows, columns) of bool or uint8, not 0 within:
        cells begin at the frames' first pixel, and count where all four pixels are within. Give one
        of them, or none for whole frames.

        Throws ValueError for a region that is not within the frames or holds no cell, and for a
        mask of another shape than theirs.
        """
        arrays = self._core.region(frames, region, mask, thread_count(threads))
        return RegionMeans(**{name: array[()] for name, array in arrays.items()})
