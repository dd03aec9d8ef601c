# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Helps tests of programs that use planes."""

from __future__ import annotations

from typing import Any, Dict, Mapping, Union

import numpy as np
import numpy.typing as npt

Results = Union[Mapping[str, npt.ArrayLike], npt.ArrayLike, Any]


def assert_planes_equal(actual: Results, expected: Results) -> None:
    """Throws AssertionError unless two results are equal to the last bit.

    Each is a `Planes` or `Maps`, a mapping of names to arrays, or one array. The error names the
    plane, the first pixel that differs, (..., row, column) counted from 0, both of its values, and
    how many differ. NaNs of the same bits are equal; 0.0 and -0.0 are not.
    """
    ours, theirs = _named(actual), _named(expected)
    if ours.keys() != theirs.keys():
        raise AssertionError(
            f"the planes are {_listed(ours)}, and {_listed(theirs)} were expected"
        )
    for name, plane in ours.items():
        _assert_equal(name, plane, theirs[name])


def _named(results: Results) -> Dict[str, npt.NDArray[Any]]:
    if hasattr(results, "asdict"):
        results = results.asdict()
    if not isinstance(results, Mapping):
        results = {"plane": results}
    return {name: np.asarray(plane) for name, plane in results.items()}


def _listed(planes: Mapping[str, Any]) -> str:
    return ", ".join(sorted(planes)) or "none"


def _assert_equal(name: str, actual: npt.NDArray[Any], expected: npt.NDArray[Any]) -> None:
    if actual.dtype != expected.dtype or actual.shape != expected.shape:
        raise AssertionError(
            f"{name} is of {actual.dtype} and the shape {actual.shape}, and {expected.dtype} and "
            f"the shape {expected.shape} were expected"
        )
    differing = _bits(actual) != _bits(expected)
    if not differing.any():
        return
    first = tuple(int(index) for index in np.argwhere(differing)[0])
    raise AssertionError(
        f"{name} differs in {np.count_nonzero(differing)} of {differing.size} values, first at "
        f"{first}: {actual[first]!r}, and {expected[first]!r} was expected"
    )


def _bits(plane: npt.NDArray[Any]) -> npt.NDArray[Any]:
    return np.ascontiguousarray(plane).view(f"u{plane.dtype.itemsize}").reshape(plane.shape)
