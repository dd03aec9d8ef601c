# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Processors: how frames come from a sensor, and what is computed from them."""

from __future__ import annotations

import dataclasses
import os
from typing import Any, Dict, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from kv_polarization import _core
from kv_polarization.calibration import Calibration
from kv_polarization.frames import Frames, thread_count
from kv_polarization.measures import Measures
from kv_polarization.named_arrays import Out, in_order
from kv_polarization.noise import SensorNoise, noise_numbers
from kv_polarization.planes import Planes


@dataclasses.dataclass(frozen=True, eq=False)
class Processor(Measures):
    """What is known of a sensor, and all that is computed from its frames.

    A processor never changes, so that any number of threads may use it at the same time; it may be
    pickled, and be used in forked processes. All functions take arrays (..., rows, columns) of
    uint8 or uint16, whose leading axes may be any, and compute without the interpreter's lock.

    - `phase`: 0, 45, 90 or 135, the angle in degrees of the polarizer before the sensor's top left
      pixel. The calibration's, or 0, where None.
    - `origin`: column and row on the sensor of the frames' first pixel, (x, y), from 0 up, for
      regions of interest. The calibration's, or (0, 0), where None.
    - `calibration`: what the sensor is: a `Calibration`, or the path of its JSON. Frames are
      corrected by it before anything else. They must lie within the calibrated region, and be of
      its bit depth.
    - `bit_depth`: significant bits of a sample, 1 to 16. The calibration's, or all bits of the
      elements, where None.
    - `left_aligned`: whether these are the highest bits of the elements, with zeros below.
    - `black_level`: counts that a sample has in the dark. Planes know none: this and what follows,
      up to `compensation`, is for maps and regions. Not beside a calibration, which has its own.
    - `clip_level`: the sample, black level included, from which on a pixel counts as clipped; the
      greatest one where None. Not beside a calibration.
    - `rescue`: whether the one clipped sample of a pixel's neighbourhood is rebuilt from the other
      three, which takes even gains: within 2 per cent, or a calibration, which also rescues planes.
    - `noise`: of the sensor, wanted by standard deviations. Not beside a calibration, which tells
      it.
    - `bad_pixels`: an array (rows, columns) of bool or uint8, of the whole sensor, not 0 for pixels
      not to believe. With a calibration they are added to its own, and count for planes as well.
    - `compensation`: evens out the brightness within each pixel's neighbourhood, against the false
      polarization of edges; the least mean brightness of a neighbourhood, in counts above black,
      that it is done at: 4 does well. None, by default, measures what is there.
    - `weights`: an array of the shape (4, 4, 4), taken as float32: the weights of the Stokes
      estimate behind the polarizers 0, 45, 90 and 135, by rows of S0 (whose sum is halved
      afterwards), S1, S2 and a spare one, by columns of the pixel, its horizontal, its vertical and
      its diagonal neighbour.
    - `weights_everywhere`: whether these weights count in every pixel. As in the library they count
      in the last columns and rows alone.

    Errors: ValueError for values out of their range, TypeError for arrays of other types.
    """

    phase: Optional[int] = None
    origin: Optional[Tuple[int, int]] = None
    _: dataclasses.KW_ONLY
    calibration: Union[Calibration, str, os.PathLike[str], None] = None
    bit_depth: Optional[int] = None
    left_aligned: bool = False
    black_level: float = 0
    clip_level: Optional[int] = None
    rescue: bool = False
    noise: Optional[SensorNoise] = None
    bad_pixels: Optional[npt.NDArray[Union[np.bool_, np.uint8]]] = None
    compensation: Optional[float] = None
    weights: Optional[npt.NDArray[Any]] = None
    weights_everywhere: bool = False

    def __post_init__(self) -> None:
        known = _loaded(self.calibration)
        given: Dict[str, Any] = {"calibration": known}
        if self.phase is None:
            given["phase"] = known.phase if known else 0
        origin = self.origin
        if origin is None:
            origin = known.origin if known else (0, 0)
        given["origin"] = tuple(origin)
        given["weights"] = _kept(self.weights)
        given["bad_pixels"] = _kept(self.bad_pixels)
        if self.bit_depth is None and known:
            given["bit_depth"] = known.bit_depth
        for name, value in given.items():
            object.__setattr__(self, name, value)
        arguments = {field.name: getattr(self, field.name) for field in _fields()}
        arguments["calibration"] = known and known._core
        arguments["noise"] = noise_numbers(self.noise)
        object.__setattr__(self, "_core", _core.Processor(**arguments))

    def transform(
        self,
        frames: Frames,
        planes: Union[str, Sequence[str]] = ("intensity", "dolp"),
        out: Out = None,
        threads: Optional[int] = None,
        *,
        output_max: int = 65535,
    ) -> Planes:
        """The planes of frames.

        `frames` is an array (..., rows, columns) of uint8 or uint16. Frames of rows in one piece
        are taken as they lie, whatever the strides of the leading axes; other arrays are copied
        first, once. Nothing is ever converted.

        `planes` names those wanted, of `PLANES`. `out` gives arrays to fill, of the exact dtype and
        shape: a `Planes` or a mapping of names, a sequence in the order of `planes`, or one array
        for one plane. They may share no memory with each other or with the frames.

        `threads` is how many of them work at most, all that the process may use where None: on
        frames side by side, or on strips of one frame. The results do not depend on it.

        `output_max` is the full scale of the 16-bit planes, 1 to 65535.

        With a calibration they are planes of corrected frames, of 16 bits: full scale of
        `intensity`, `stokes_s1` and `stokes_s2` stands for 65535 / 2^gained_bits counts of raw
        frames, of those bits that `Calibration.apply` tells.

        Throws TypeError for arrays of another type, and ValueError for frames with a side below 2
        or a width of 2 or 3 and a height above 2, for unknown names, and for arrays in `out` that
        cannot be filled; nothing was computed then.
        """
        names = (planes,) if isinstance(planes, str) else tuple(planes)
        arrays = self._core.transform(
            frames, names, in_order(names, out), output_max, thread_count(threads)
        )
        return Planes(**dict(zip(names, arrays)), output_max=output_max)

    def __reduce__(self) -> Tuple[Any, ...]:
        return _made_of, ({field.name: getattr(self, field.name) for field in _fields()},)


def _fields() -> Tuple[dataclasses.Field[Any], ...]:
    return dataclasses.fields(Processor)


def _kept(array: Optional[npt.NDArray[Any]]) -> Optional[npt.NDArray[Any]]:
    """A copy that nobody can change; what is no plain array stays, and is refused by its taker."""
    if type(array) is not np.ndarray:
        return array
    copy = array.copy()
    copy.flags.writeable = False
    return copy


def _loaded(calibration: Union[Calibration, str, os.PathLike[str], None]) -> Optional[Calibration]:
    if calibration is None or isinstance(calibration, Calibration):
        return calibration
    return Calibration.load(calibration)


def _made_of(arguments: Dict[str, Any]) -> Processor:
    return Processor(**arguments)
