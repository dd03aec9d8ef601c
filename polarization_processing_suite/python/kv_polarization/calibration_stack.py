# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""The frames that a calibration is made of, as the fit asks for them."""

from __future__ import annotations

import itertools
import math
from typing import Any, Iterable, Iterator, List, Optional, Sequence, Tuple

import numpy as np
import numpy.typing as npt

_KINDS = ("polarized", "dark", "flat")
Item = Tuple[int, float, str, Any]  # number of the kind, angle, name, frame


class _Frames:
    """Frames of one kind, from the first to the last, and any of them once more."""

    def __init__(self, frames: Any, kind: str) -> None:
        if isinstance(frames, np.ndarray) and frames.ndim == 2:
            frames = frames[np.newaxis]
        self._frames = frames
        self._kind = kind

    def __iter__(self) -> Iterator[Any]:
        return iter(self._frames)

    def again(self, index: int) -> Any:
        frames = self._frames
        if hasattr(frames, "__getitem__"):
            return frames[index]
        once_more = iter(frames)
        if once_more is frames:
            raise ValueError(
                f"{self._kind} frame {index} does not fit and has to be read again to be taken "
                "out, but an iterator gives its frames only once; hand over a list, an array, or "
                "any sequence that reads its frames when it is asked for them"
            )
        return next(itertools.islice(once_more, index, None))


class Stack:
    """Darks come first, as weights of the others are better with the black level known."""

    def __init__(
        self,
        frames: Iterable[Any],
        darks: Optional[Iterable[Any]],
        flats: Optional[Iterable[Any]],
        angles: Sequence[float],
        angles_known: bool,
        names: Optional[Sequence[str]],
    ) -> None:
        given = {"dark": darks, "flat": flats, "polarized": frames}
        self._sources = {
            kind: _Frames(source, kind) for kind, source in given.items() if source is not None
        }
        self._angles = itertools.chain(angles, itertools.repeat(math.nan))
        self._names = names
        self._counts = {} if not angles_known and len(angles) == 1 else {"angles": len(angles)}
        if names is not None:
            self._counts["names"] = len(names)
        self._places: List[Tuple[str, int]] = []

    def __iter__(self) -> Iterator[Item]:
        for kind, source in self._sources.items():
            count = 0
            for count, frame in enumerate(source, 1):
                self._places.append((kind, count - 1))
                yield self._item(kind, count - 1, frame)
            if kind == "polarized":
                self._check_count(count)

    def again(self, number: int) -> Any:
        """The frame that came as that one, once more."""
        kind, index = self._places[number]
        return self._sources[kind].again(index)

    def _item(self, kind: str, index: int, frame: Any) -> Item:
        number = _KINDS.index(kind)
        if kind != "polarized":
            return number, 0.0, f"{kind} {index}", frame
        self._check_count(index + 1, at_least=True)
        name = f"frame {index}" if self._names is None else self._names[index]
        return number, next(self._angles), name, frame

    def _check_count(self, frames: int, at_least: bool = False) -> None:
        for what, count in self._counts.items():
            if count < frames or (count > frames and not at_least):
                least = " or more" if at_least else ""
                raise ValueError(
                    f"there are {count} {what} for {frames}{least} polarized frames; "
                    "there must be one for each"
                )


def angles_of(angles: npt.ArrayLike) -> Sequence[float]:
    """Throws ValueError for what is no list of degrees."""
    # Number by number: numpy would believe an object that claims to lie in memory.
    values: Any = angles
    shape = getattr(values, "shape", None)
    if isinstance(values, np.ndarray) and values.ndim > 1:
        raise ValueError(f"angles must be a list of degrees, not of the shape {shape}")
    try:
        if shape == () or isinstance(values, (int, float)):
            return [float(values)]
        return [float(value) for value in values]
    except (TypeError, ValueError, OverflowError) as error:
        raise ValueError(f"angles must be a list of degrees: {error}") from None
