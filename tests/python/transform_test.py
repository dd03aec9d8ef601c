# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Planes of arrays, by hand and against the planes of single frames."""

import pickle

import numpy as np
import pytest

import kv_polarization as kv

MAX = 65535


def frames_of(*leading, rows=11, columns=21, dtype=np.uint16):
    top = np.iinfo(dtype).max
    shape = (*leading, rows, columns)
    return np.random.default_rng(7).integers(0, top, shape, dtype, endpoint=True)


# Samples of the polarizers 0, 45, 90 and 135, and by hand S0 at half of their sum, in full scale of
# 255, clipped; S1 = I0 - I90; S2 = I45 - I135; the angle above -90 as a share of 180 degrees.
@pytest.mark.parametrize("phase, cell", [
    (0, [[0, 135], [45, 90]]),
    (45, [[45, 90], [0, 135]]),
    (90, [[90, 45], [135, 0]]),
    (135, [[135, 0], [90, 45]]),
])  # fmt: skip
def test_planes_are_those_of_the_light(phase, cell):
    light = {0: 200, 45: 100, 90: 40, 135: 100}
    frame = np.tile(np.array([[light[angle] for angle in row] for row in cell], np.uint8), (6, 9))
    planes = kv.Processor(phase).transform(frame, kv.PLANES, output_max=255)
    assert abs(planes.intensity.astype(int) - 220).max() <= 1
    assert abs(planes.stokes_s1.astype(int) - 160).max() <= 1
    assert abs(planes.stokes_s2.astype(int)).max() <= 1
    assert abs(planes.azimuth.astype(int) - 127.5).max() <= 1
    assert abs(planes.dolp / 255 - 160 / 220).max() <= 1 / 255
    assert np.allclose(planes.normalized_stokes, [160 / 220, 0], atol=1e-3)


@pytest.mark.parametrize("dtype", [np.uint8, np.uint16])
@pytest.mark.parametrize("threads", [None, 1, 3])
def test_leading_axes_and_strides_change_nothing(dtype, threads):
    processor = kv.Processor(45, (1, 0))
    frames = frames_of(3, 4, dtype=dtype)
    views = {
        "as it is": frames,
        "transposed leading axes": frames.transpose(1, 0, 2, 3),
        "backwards": frames[::-1, ::2],
        "rows with gaps": frames[..., :-2],
        "columns with gaps": frames[..., ::2],
        "upside down": frames[..., ::-1, :],
        "mirrored": frames[..., ::-1],
        "turned": frames.swapaxes(-1, -2),
        "one for all": np.broadcast_to(frames[0, 0], (5, 11, 21)),
        "single row steps": np.lib.stride_tricks.sliding_window_view(frames[0, 0].ravel(), 42)
        .reshape(-1, 2, 21),
        "none": frames[:0],
        "read-only": np.frombuffer(frames.tobytes(), dtype).reshape(frames.shape),
        "at an odd address": np.frombuffer(b"." + frames.tobytes(), np.uint8)[1:]
        .view(dtype).reshape(frames.shape),
    }  # fmt: skip
    for name, view in views.items():
        planes = processor.transform(view, kv.PLANES, threads=threads)
        assert planes.intensity.shape == view.shape, name
        assert planes.normalized_stokes.shape == (*view.shape, 2), name
        for place in np.ndindex(view.shape[:-2]):
            alone = processor.transform(view[place].copy(), kv.PLANES, threads=1)
            for plane in kv.PLANES:
                assert planes[plane][place].tobytes() == alone[plane].tobytes(), (name, plane)


def test_out_is_filled_in_place():
    processor = kv.Processor()
    frames = frames_of(2, 3)
    expected = processor.transform(frames)
    mixed = np.zeros((2, 3, 2, 11, 21), np.uint16)  # the planes of a frame side by side
    sequence = (mixed[:, :, 0], mixed[:, :, 1])
    single = np.zeros_like(frames)
    for out in (sequence, dict(zip(("intensity", "dolp"), sequence)), kv.Planes(dolp=single)):
        mixed[:] = 0
        planes = processor.transform(frames, out=out)
        for name in ("intensity", "dolp"):
            assert np.array_equal(planes[name], expected[name])
    assert np.array_equal(single, expected.dolp)
    assert processor.transform(frames, "dolp", out=single).dolp is single


def test_memory_is_used_again_once_nobody_holds_it():
    processor = kv.Processor()
    frames = frames_of(rows=1024, columns=1024)  # planes of 2 MB
    view = processor.transform(frames).dolp[5:7, ::3]
    copy = view.copy()
    address = view.base.ctypes.data
    others = [processor.transform(frames[::-1]) for _ in range(4)]
    assert np.array_equal(view, copy)
    assert all(other.dolp.ctypes.data != address for other in others)
    del view, others
    again = processor.transform(frames, kv.PLANES)
    del processor  # before its arrays
    assert address in [plane.ctypes.data for plane in again.asdict().values()]
    assert np.array_equal(again.dolp[5:7, ::3], copy) and again.dolp.flags.writeable


def test_what_cannot_be_filled_is_refused_and_left_alone():
    frames = frames_of(2)
    plane = np.full(frames.shape, 7, np.uint16)
    read_only = plane.copy()
    read_only.flags.writeable = False
    both = np.full((2, *frames.shape), 7, np.uint16)
    cases = {
        "read-only": read_only,
        "float32": plane.astype(np.float32),
        "byte order": plane.astype(">u2"),
        "(2, 11, 21)": plane[:1],
        "without gaps": np.full((2, 11, 42), 7, np.uint16)[..., ::2],
        "not aligned": np.full(plane.nbytes + 1, 7, np.uint8)[1:].view(np.uint16)
        .reshape(plane.shape),
        "the frames": frames,
        "itself": np.lib.stride_tricks.as_strided(plane, plane.shape, (2, *plane.strides[1:])),
        "numpy array": plane.tolist(),
        "mask": np.ma.masked_array(plane),
        "1 arrays for 2": (plane,),
        "'intensity'": (both[0], both[0]),
        "'azimuth'": {"azimuth": plane},
    }  # fmt: skip
    for part, out in cases.items():
        names = ("intensity", "dolp") if not isinstance(out, np.ndarray) else "dolp"
        names = "dolp" if part == "numpy array" else names
        with pytest.raises((TypeError, ValueError)) as error:
            kv.Processor().transform(frames, names, out=[out] if names == "dolp" else out)
        assert part == "byte order" or part in str(error.value), error.value
    assert (plane == 7).all() and (both == 7).all()


@pytest.mark.parametrize("arguments, part", [
    ({"phase": 30}, "0, 45, 90 or 135"),
    ({"origin": (0, -1)}, "from 0 up"),
    ({"bit_depth": 17}, "bit depth"),
    ({"bit_depth": 0}, "bit depth"),
    ({"weights": np.ones((4, 16))}, "(4, 4, 4)"),
])  # fmt: skip
def test_sensors_that_cannot_be_are_refused(arguments, part):
    with pytest.raises(ValueError) as error:
        kv.Processor(**arguments).transform(frames_of())
    assert part in str(error.value)


def test_weights_count_where_they_are_told_to():
    frame = np.full((8, 16), 20000, np.uint16)
    weights = np.zeros((4, 4, 4), np.float32)
    weights[:, 0] = 0.25  # half of the four samples' sum is 10000 then, and 40000 usually
    everywhere = kv.Processor(weights=weights, weights_everywhere=True)
    assert (abs(everywhere.transform(frame, "intensity").intensity - 10000.0) <= 1).all()
    intensity = kv.Processor(weights=weights).transform(frame, "intensity").intensity
    assert (abs(intensity[-2:] - 10000.0) <= 1).all()
    assert (abs(intensity[:2, :8] - 40000.0) <= 20).all()


def test_processors_pickle():
    processor = kv.Processor(135, (1, 1), bit_depth=12, weights=np.ones((4, 4, 4), np.float32))
    again = pickle.loads(pickle.dumps(processor))
    assert (again.phase, again.origin, again.bit_depth) == (135, (1, 1), 12)
    frames = frames_of(2) >> 4
    assert np.array_equal(again.transform(frames).dolp, processor.transform(frames).dolp)
