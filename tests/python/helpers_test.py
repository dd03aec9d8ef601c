# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""What the package offers to other programs' tests and reports."""

import pathlib
import subprocess

import numpy as np
import pytest

import kv_polarization as kv
from kv_polarization.testing import assert_planes_equal


def test_planes_are_compared_by_bits():
    plane = np.arange(12, dtype=np.uint16).reshape(3, 4)
    other = plane.copy()
    other[1, 2:] = 60000
    nan, zero = np.float32([[np.nan, 0.0]]), np.float32([[np.nan, -0.0]])
    cases = [
        (kv.Planes(dolp=plane), {"dolp": plane.copy()}, None),
        (nan, nan.copy(), None),
        (nan, zero, "differs in 1 of 2 values, first at (0, 1): 0.0, and -0.0"),
        (kv.Planes(dolp=other), kv.Planes(dolp=plane),
         "dolp differs in 2 of 12 values, first at (1, 2): 60000, and 6 was expected"),
        (plane, plane.astype(np.float32), "uint16"),
        (plane, plane[:2], "(2, 4)"),
        (kv.Planes(dolp=plane), kv.Planes(azimuth=plane), "azimuth"),
    ]  # fmt: skip
    for actual, expected, part in cases:
        if part is None:
            assert_planes_equal(actual, expected)
            continue
        with pytest.raises(AssertionError) as error:
            assert_planes_equal(actual, expected)
        assert part in str(error.value)


def test_the_build_tells_of_itself():
    info = kv.build_info()
    assert info["version"] == kv.__version__
    assert "libkevrinth_qrm_polarization_processor.so" in info["library"]
    assert info["kernels"] in ("sse2", "sse41", "avx2", "avx512")
    assert (info["tier"] == "baseline") == (info["vector_module"] is None)
    assert info["logger"] and info["formats"]["npy"]


def test_tool_and_package_tell_the_same_build():
    tool = pathlib.Path(kv.build_info()["library"]).parent / "kv-polarize"
    if not tool.exists():
        pytest.skip("built without the tool")
    said = subprocess.run([tool, "--version"], capture_output=True, text=True, check=True).stdout
    info = kv.build_info()
    head, *lines = said.splitlines()
    assert head == f"kv-polarize {info['version']}"
    told = {line[2:20].strip(): line[20:] for line in lines}
    assert told == {
        "compiler": f"{info['compiler']}, {info['flags']}",
        "instruction sets": ", ".join(info["instruction_sets"]),
        "options": ", ".join(f"{name}={value}" for name, value in info["options"].items()),
        "libraries": ", ".join(f"{name} {number}" for name, number in info["libraries"].items()),
    }
