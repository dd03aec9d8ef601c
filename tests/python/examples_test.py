# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""The examples, each as its own program in an empty folder."""

import pathlib
import re
import subprocess
import sys

import numpy as np
import zarr

import kv_polarization as kv

EXAMPLES = pathlib.Path(__file__).parents[2] / "examples" / "python"


def run(folder, name, *arguments):
    done = subprocess.run(
        [sys.executable, EXAMPLES / name, *arguments],
        cwd=folder, capture_output=True, text=True, timeout=120,
    )  # fmt: skip
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def test_one_frame(tmp_path):
    said = run(tmp_path, "one_frame.py")
    assert "DoLP 0.700, angle 30.0 degrees" in said  # as its film is made
    assert kv.read(tmp_path / "dolp.png").shape == (200, 320)


def test_calibrate_and_compare(tmp_path):
    said = run(tmp_path, "calibrate.py")
    before, after = (
        [float(number) for number in re.findall(r"\d+\.\d+", line)]
        for line in said.splitlines()[-2:]
    )
    assert abs(after[0] - 0.6) < 1e-3 and abs(after[2] - 20) < 0.05  # as its film is made
    assert abs(before[0] - 0.6) > 0.01 and after[3] < 0.7 * before[3]
    assert "!" not in said and (tmp_path / "camera.html").stat().st_size > 10000


def test_cluster_goes_on_where_it_was(tmp_path):
    frames = np.random.default_rng(3).integers(0, 4096, (10, 24, 40), np.uint16)
    zarr.save_array(tmp_path / "frames.zarr", frames, chunks=(1, 24, 40))
    options = ["frames.zarr", "planes.zarr", "--bit-depth", "12", "--chunk", "2", "--slab", "2"]
    dolp = kv.Processor(bit_depth=12).transform(frames).dolp
    assert run(tmp_path, "cluster.py", *options).startswith("4 of 10")
    planes = zarr.open_group(str(tmp_path / "planes.zarr"), "r+")
    assert np.array_equal(planes["dolp"], dolp)
    planes["dolp"][:] = 7
    planes.attrs["frames_done"] = 4
    assert run(tmp_path, "cluster.py", *options).startswith("8 of 10")
    assert (planes["dolp"][:4] == 7).all() and np.array_equal(planes["dolp"][4:], dolp[4:])
