# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""The accessor of xarray's arrays."""

import numpy as np
import xarray

import kv_polarization as kv
import kv_polarization.xarray
from kv_polarization.testing import assert_planes_equal

SAMPLES = np.random.default_rng(5).integers(0, 4096, (3, 20, 30), np.uint16)
FRAMES = xarray.DataArray(
    SAMPLES, dims=("time", "y", "x"), coords={"time": [10, 20, 40], "x": np.arange(30) * 0.5}
)
PROCESSOR = kv.Processor(45, bit_depth=12)


def test_planes_keep_dimensions_and_coordinates():
    expected = PROCESSOR.transform(SAMPLES, kv.PLANES, output_max=1000)
    for frames in (FRAMES, FRAMES.chunk({"time": 1})):
        planes = frames.kv.planes(PROCESSOR, kv.PLANES, output_max=1000)
        assert (planes.dolp.chunks is None) == (frames.chunks is None)
        assert_planes_equal({name: planes[name].values for name in kv.PLANES}, expected)
        assert planes.dolp.dims == ("time", "y", "x")
        assert planes.normalized_stokes.dims == ("time", "y", "x", "ratio")
        assert list(planes.ratio.values) == ["S1/S0", "S2/S0"]
        assert list(planes.sel(time=40).x.values[:3]) == [0, 0.5, 1]


def test_attributes_tell_what_levels_stand_for():
    frame = np.tile(np.uint16([[1000, 600], [600, 200]]), (4, 8))  # 0 degrees, DoLP 800 / 1200
    planes = xarray.DataArray(frame, dims=("y", "x")).kv.planes(
        kv.Processor(bit_depth=12), ("intensity", "azimuth", "dolp"), output_max=4095
    )
    for name, value, unit in (
        ("intensity", 1200 / 4095, "full scale of the samples"),
        ("azimuth", 0, "degrees"),
        ("dolp", 2 / 3, "1"),
    ):
        plane = planes[name]
        values = plane * plane.scale_factor + plane.add_offset
        assert plane.units == unit and plane.long_name
        assert abs(values - value).max() < (0.1 if name == "azimuth" else 1e-3), name
