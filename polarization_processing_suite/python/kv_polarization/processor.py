"""Processors: how frames come from a sensor, and what is computed from them."""

from __future__ import annotations

import dataclasses
import operator
from typing import Any, Dict, Mapping, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from kv_polarization import _core
from kv_polarization.planes import Planes

Frames = npt.NDArray[Union[np.uint8, np.uint16]]
Out = Union[
    Planes,
    Mapping[str, npt.NDArray[np.generic]],
    Sequence[npt.NDArray[np.generic]],
    npt.NDArray[np.generic],
]


@dataclasses.dataclass(frozen=True, eq=False)
class Processor:
    """What is known of a sensor, and all that is computed from its frames.

    A processor never changes, so that any number of threads may use it at the same time; it may be
    pickled, and be used in forked processes. All functions take arrays (..., rows, columns) of uint8
    or uint16, whose leading axes may be any, and compute without the interpreter's lock.

    - `phase`: 0, 45, 90 or 135, the angle in degrees of the polarizer before the sensor's top left
      pixel. The calibration's, or 0, where None.
    - `origin`: column and row on the sensor of the frames' first pixel, (x, y), from 0 up, for
      regions of interest. The calibration's, or (0, 0), where None.
    - `bit_depth`: significant bits of a sample, 1 to 16. The calibration's, or all bits of the
      elements, where None.
    - `left_aligned`: whether these are the highest bits of the elements, with zeros below.
    - `weights`: float32 of the shape (4, 4, 4), the weights of the Stokes estimate behind the
      polarizers 0, 45, 90 and 135: rows of S0 (whose sum is halved afterwards), S1, S2 and a spare
      one, columns of the pixel, its horizontal, its vertical and its diagonal neighbour.
    - `weights_everywhere`: whether these weights count in every pixel. As in the library they count
      in the last columns and rows alone.

    Errors: ValueError for values out of their range, TypeError for arrays of other types.
    """

    phase: Optional[int] = None
    origin: Optional[Tuple[int, int]] = None
    _: dataclasses.KW_ONLY
    bit_depth: Optional[int] = None
    left_aligned: bool = False
    weights: Optional[npt.ArrayLike] = None
    weights_everywhere: bool = False

    def __post_init__(self) -> None:
        set_field = object.__setattr__
        set_field(self, "phase", 0 if self.phase is None else self.phase)
        set_field(self, "origin", (0, 0) if self.origin is None else tuple(self.origin))
        core = _core.Processor(**{field.name: getattr(self, field.name) for field in _fields()})
        set_field(self, "_core", core)

    def transform(
        self,
        frames: Frames,
        planes: Union[str, Sequence[str]] = ("intensity", "dolp"),
        out: Optional[Out] = None,
        threads: Optional[int] = None,
        *,
        output_max: int = 65535,
    ) -> Planes:
        """The planes of frames.

        `frames` is an array (..., rows, columns) of uint8 or uint16. Frames of rows in one piece are
        taken as they lie, whatever the strides of the leading axes; other arrays are copied first,
        once. Nothing is ever converted.

        `planes` names those wanted, of `PLANES`. `out` gives arrays to fill, of the exact dtype and
        shape: a `Planes` or a mapping of names, a sequence in the order of `planes`, or one array
        for one plane. They may share no memory with each other or with the frames.

        `threads` is how many of them work at most, all that the process may use where None: on
        frames side by side, or on strips of one frame. The results do not depend on it.

        `output_max` is the full scale of the 16-bit planes, 1 to 65535.

        Throws TypeError for arrays of another type, and ValueError for frames with a side below 2 or
        a width of 2 or 3 and a height above 2, for unknown names, and for arrays in `out` that
        cannot be filled; nothing was computed then.
        """
        names = (planes,) if isinstance(planes, str) else tuple(planes)
        arrays = self._core.transform(
            frames, names, _in_order(names, out), output_max, _thread_count(threads)
        )
        return Planes(**dict(zip(names, arrays)), output_max=output_max)

    def __reduce__(self) -> Tuple[Any, ...]:
        return _made_of, ({field.name: getattr(self, field.name) for field in _fields()},)


def _fields() -> Tuple[dataclasses.Field[Any], ...]:
    return dataclasses.fields(Processor)


def _made_of(arguments: Dict[str, Any]) -> Processor:
    return Processor(**arguments)


def _thread_count(threads: Optional[int]) -> int:
    """As the toolkit takes it: 0 for all; below, what it refuses."""
    return 0 if threads is None else operator.index(threads) or -1


def _in_order(names: Tuple[str, ...], out: Optional[Out]) -> Sequence[Any]:
    """The arrays to fill, one for each name; None for those to be made."""
    if out is None:
        return (None,) * len(names)
    if isinstance(out, np.ndarray):
        arrays: Sequence[Any] = (out,)
    elif isinstance(out, Planes):
        arrays = tuple(getattr(out, name, None) for name in names)
    elif isinstance(out, Mapping):
        unknown = sorted(set(out) - set(names))
        if unknown:
            raise ValueError(f"out has an array for {unknown[0]!r}, which is not asked for")
        arrays = tuple(out.get(name) for name in names)
    else:
        arrays = tuple(out)
    if len(arrays) != len(names):
        raise ValueError(
            f"out has {len(arrays)} arrays for {len(names)} planes; it must have one for each"
        )
    return arrays
