# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""What results of several arrays have in common."""

from __future__ import annotations

from typing import Any, ClassVar, Dict, Mapping, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from kv_polarization.thumbnails import Row, thumbnail_table


class NamedArrays:
    """Arrays by their names, those of `NAMES`; None where one was not asked for."""

    NAMES: ClassVar[Tuple[str, ...]] = ()

    @property
    def names(self) -> Tuple[str, ...]:
        """The names of those that are there."""
        return tuple(name for name in self.NAMES if getattr(self, name) is not None)

    def asdict(self) -> Dict[str, npt.NDArray[Any]]:
        """Those that are there, by their names. The arrays are not copied."""
        return {name: getattr(self, name) for name in self.names}

    def __getitem__(self, name: str) -> npt.NDArray[Any]:
        """The one of that name; KeyError where it was not asked for."""
        return self.asdict()[name]

    def __repr__(self) -> str:
        arrays = [f"{name}: {array.dtype} {array.shape}" for name, array in self.asdict().items()]
        return f"{type(self).__name__}({', '.join(arrays)})"

    def _repr_html_(self) -> str:
        """A table with thumbnails, as notebooks show it."""
        return thumbnail_table(type(self).__name__, map(self._row, self.names))

    def _row(self, name: str) -> Row:
        """How the table shows the array of that name."""
        raise NotImplementedError


Out = Union[
    NamedArrays,
    Mapping[str, npt.NDArray[Any]],
    Sequence[npt.NDArray[Any]],
    npt.NDArray[Any],
    None,
]


def in_order(names: Tuple[str, ...], out: Out) -> Sequence[Any]:
    """The arrays to fill, one for each name; None for those to be made."""
    if out is None:
        return (None,) * len(names)
    if isinstance(out, np.ndarray):
        return (out,)
    if isinstance(out, NamedArrays):
        return tuple(getattr(out, name, None) for name in names)
    if isinstance(out, Mapping):
        unknown = sorted(set(out) - set(names))
        if unknown:
            raise ValueError(f"out has an array for {unknown[0]!r}, which is not asked for")
        return tuple(out.get(name) for name in names)
    return tuple(out)
