# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Planes of xarray's arrays: importing this module gives every DataArray the accessor `kv`.

    import kv_polarization.xarray
    frames = xarray.DataArray(samples, dims=("time", "y", "x"))
    planes = frames.kv.planes(kv_polarization.Processor(phase=90), ("intensity", "dolp"))
"""

from __future__ import annotations

from typing import Any, Dict, Optional, Sequence, Union

try:
    import xarray
except ImportError as error:
    raise ImportError("kv_polarization.xarray needs xarray: pip install xarray") from error

from kv_polarization import dask as kv_dask
from kv_polarization.planes import Planes
from kv_polarization.processor import Processor


@xarray.register_dataarray_accessor("kv")
class FrameAccessor:
    """What a DataArray of raw frames, with rows and columns as its last dimensions, can become."""

    def __init__(self, frames: xarray.DataArray) -> None:
        self._frames = frames

    def planes(
        self,
        processor: Optional[Processor] = None,
        planes: Union[str, Sequence[str]] = ("intensity", "dolp"),
        *,
        output_max: int = 65535,
    ) -> xarray.Dataset:
        """The planes as variables of a Dataset, with the frames' dimensions and coordinates.

        The last two dimensions are rows and columns, whatever their names; `normalized_stokes` has
        `ratio` behind them, of the coordinates "S1/S0" and "S2/S0". Attributes tell what a plane is
        (`long_name`), its `units`, and the range of its levels; with `scale_factor` and
        `add_offset` values are levels * scale_factor + add_offset, as in the CF conventions.

        Frames in Dask's arrays become planes in Dask's arrays, which are computed later. Errors are
        those of `Processor.transform`.
        """
        frames = self._frames
        processor = Processor() if processor is None else processor
        transform: Any = processor.transform
        arguments: Dict[str, Any] = {"planes": planes, "output_max": output_max}
        if frames.chunks is not None:
            transform, arguments["processor"] = kv_dask.transform, processor
        results: Planes = transform(frames.data, **arguments)
        variables = {}
        for name, plane in results.asdict().items():
            dims = (*frames.dims, "ratio") if name == "normalized_stokes" else frames.dims
            variables[name] = xarray.Variable(dims, plane, attributes_of(name, output_max))
        coordinates: Dict[str, Any] = dict(frames.coords)
        if "normalized_stokes" in variables:
            coordinates["ratio"] = ["S1/S0", "S2/S0"]
        return xarray.Dataset(variables, coordinates)


def attributes_of(name: str, output_max: int) -> Dict[str, Any]:
    """What a plane's array tells of itself."""
    if name == "normalized_stokes":
        return {"long_name": "S1/S0 and S2/S0", "units": "1", "valid_range": [-1.0, 1.0]}
    long_name, units, least, span = _LEVELS[name]
    return {
        "long_name": long_name,
        "units": units,
        "valid_range": [0, output_max],
        "scale_factor": span / output_max,
        "add_offset": least,
    }


# What levels from 0 to output_max stand for: name, units, the value at 0, and the span of values.
_FULL_SCALE = "full scale of the samples"
_LEVELS = {
    "intensity": ("S0, half of the sum of four samples", _FULL_SCALE, 0.0, 1.0),
    "stokes_s1": ("S1 = I0 - I90, negative values as 0", _FULL_SCALE, 0.0, 1.0),
    "stokes_s2": ("S2 = I45 - I135, negative values as 0", _FULL_SCALE, 0.0, 1.0),
    "azimuth": ("angle of linear polarization", "degrees", -90.0, 180.0),
    "dolp": ("degree of linear polarization", "1", 0.0, 1.0),
}
