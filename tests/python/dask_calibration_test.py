# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Calibrations from dask arrays, beside those from the same frames in one piece."""

import dask
import dask.array as da
import numpy as np
import pytest
from calibration_test import ANGLES, DARKS, FLATS, FRAMES

import kv_polarization as kv
from kv_polarization import _core
from kv_polarization.dask import calibrate

TERMS = {"phase": 90, "bit_depth": 12, "camera": "made up", "date": "2026-01-02"}
CLIPPED = FRAMES.copy()
CLIPPED[5, :20] = 4095  # a frame that is refused, and has to be read again


def lazily(frames, count):
    return da.from_array(frames, chunks=(count, -1, -1))


@pytest.mark.parametrize("frames, chunk", [(FRAMES, 24), (FRAMES, 1), (CLIPPED, 5)])
@pytest.mark.parametrize("scheduler", ["threads", "processes"])
def test_sums_over_chunks_are_those_of_all_frames(frames, chunk, scheduler):
    expected = kv.Calibration.fit(frames, ANGLES, darks=DARKS, flats=FLATS, **TERMS)
    with dask.config.set(scheduler=scheduler, num_workers=2):
        found = calibrate(
            lazily(frames, chunk),
            ANGLES,
            darks=lazily(DARKS, 3),
            flats=lazily(FLATS, 4),
            **TERMS,
        )
    assert found.frames[5].used and [f.used for f in found.frames] == [
        f.used for f in expected.frames
    ]
    assert [f.verdict for f in found.findings] == [f.verdict for f in expected.findings]
    assert repr(found) == repr(expected)
    assert np.array_equal(found.maps["bad"], expected.maps["bad"])
    good = expected.maps["bad"] == 0
    for name, relative, absolute in (
        ("black", 1e-6, 0),
        ("gain", 1e-6, 0),
        ("diattenuation", 1e-6, 0),
        ("orientation", 0, 1e-5),
    ):
        ours, theirs = found.maps[name][good], expected.maps[name][good]
        assert np.allclose(ours, theirs, rtol=relative, atol=absolute), name


@pytest.mark.parametrize("arguments, part", [
    ({"frames": FRAMES}, "dask array"),
    ({"frames": da.from_array(FRAMES, chunks=(4, 24, -1))}, "rechunk"),
    ({"darks": lazily(DARKS.astype(np.uint8), 8)}, "one dtype"),
    ({"darks": lazily(DARKS[:, :46], 8)}, "one shape"),
    ({"frames": da.from_array(FRAMES[0])}, "three axes"),
    ({"angles": ANGLES[1:]}, "23 angles"),
    ({"frames": lazily(FRAMES.astype(np.float32), 4)}, "one dtype"),
])  # fmt: skip
def test_other_stacks_are_refused(arguments, part):
    given = {"frames": lazily(FRAMES, 6), "angles": ANGLES, "darks": lazily(DARKS, 8), **arguments}
    with pytest.raises((TypeError, ValueError)) as error:
        calibrate(**given, **TERMS)
    assert part in str(error.value)


def test_foreign_bytes_are_refused():
    with pytest.raises(ValueError):
        _core.FitPlan.__new__(_core.FitPlan).__setstate__((12, False, "", "", b"kv"))
    stack = [(0, float(angle), "") for angle in ANGLES]
    terms = _core.FitTerms(
        phase=90, origin=(0, 0), bit_depth=12, left_aligned=False, threads=1, noise=None,
        black_level=0, clip_level=None, source_dolp=1, angles_known=True, camera="", date="",
    )  # fmt: skip
    part = _core.FitPart(_core.FitPlan(stack, lambda number: FRAMES[number], terms))
    part.add(FRAMES[0], 0)
    whole = part.to_bytes()
    for bytes_ in (whole[:-1], whole[1:], np.zeros(9, np.uint8), whole):  # it has the last one
        with pytest.raises(ValueError):
            part.merge(bytes_)
