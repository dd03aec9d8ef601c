# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Maps and regions, against formulas in float64."""

import pickle

import numpy as np
import pytest

import kv_polarization as kv

CELLS = {0: [0, 135, 45, 90], 45: [45, 90, 0, 135], 90: [90, 45, 135, 0], 135: [135, 0, 90, 45]}
NOISE = kv.SensorNoise(gain=0.5, read_noise=3)


def frames_of(*leading, rows=13, columns=22, low=200, high=3000):
    shape = (*leading, rows, columns)
    return np.random.default_rng(5).integers(low, high, shape, np.uint16)


def samples_of(values, phase, origin):
    """Of each pixel, those behind 0, 45, 90 and 135 degrees in the neighbourhood; by its edges, of
    the neighbours on the other side."""
    rows, columns = values.shape
    found = np.empty((4, rows, columns))
    for y, x in np.ndindex(rows, columns):
        down = 1 if y + 1 < rows else -1
        right = 1 if x + 1 < columns else -1
        for row, column in ((y, x), (y, x + right), (y + down, x), (y + down, x + right)):
            place = (row + origin[1]) % 2 * 2 + (column + origin[0]) % 2
            found[CELLS[phase][place] // 45, y, x] = values[row, column]
    return found


def maps_by_formula(frame, phase, origin, black):
    i0, i45, i90, i135 = samples_of(frame.astype(float) - black, phase, origin)
    s0, s1, s2 = (i0 + i45 + i90 + i135) / 2, i0 - i90, i45 - i135
    variances = 0.5 * np.maximum([i0, i45, i90, i135], 0) + (0.5 * 3) ** 2 + 1 / 12
    return {
        "s0": s0,
        "s1": s1,
        "s2": s2,
        "dolp": np.hypot(s1, s2) / s0,
        "angle": np.degrees(np.arctan2(s2, s1)) / 2,
        "s0_sigma": np.sqrt(variances.sum(axis=0)) / 2,
        "s1_sigma": np.sqrt(variances[0] + variances[2]),
        "s2_sigma": np.sqrt(variances[1] + variances[3]),
    }


@pytest.mark.parametrize("phase, origin", [(0, (0, 0)), (45, (1, 0)), (90, (0, 3)), (135, (5, 7))])
def test_maps_are_those_of_the_formulas(phase, origin):
    frames = frames_of(2)
    processor = kv.Processor(phase, origin, bit_depth=12, black_level=100, noise=NOISE)
    maps = processor.maps(frames, kv.MAPS)
    short = {
        **processor.stokes(frames)._asdict(),
        "dolp": processor.dolp(frames),
        "angle": processor.angle(frames),
        **processor.sigma(frames).asdict(),
    }
    for index, frame in enumerate(frames):
        for name, expected in maps_by_formula(frame, phase, origin, 100).items():
            for found in (maps[name], short[name]):
                assert found.dtype == np.float32
                assert np.allclose(found[index], expected, rtol=1e-5, atol=2e-4), name
    assert np.array_equal(processor.dolp(frames, debias=True), maps.debiased_dolp)
    assert (maps.debiased_dolp <= maps.dolp).all()
    assert np.array_equal(processor.flags(frames), maps.quality)


def test_flags_tell_what_is_wrong():
    frame = np.full((4, 12), 1000, np.uint16)
    frame[:2, 0:2] = [[0, 0], [0, 0]]
    frame[2, 5] = 4095
    bad = np.zeros((8, 16), bool)
    bad[4 + 1, 2 + 9] = True  # row 1, column 9 of the frame
    settings = {"origin": (2, 4), "bit_depth": 12, "bad_pixels": bad}
    flags = kv.Processor(**settings).flags(frame)
    assert flags[0, 0] == kv.Quality.DARK
    assert (flags[1:4, 4:6] & kv.Quality.CLIPPED).all()
    assert (flags[0:2, 8:10] == kv.Quality.BAD_PIXEL).all()
    assert flags[0, 3] == 0 and flags[0, 10] == 0
    rescued = kv.Quality.CLIPPED | kv.Quality.RESCUED
    assert kv.Processor(**settings, rescue=True).flags(frame)[2, 5] & rescued == rescued
    clipped = kv.Processor(**settings, clip_level=1000).flags(frame)
    assert clipped[0, 5] & kv.Quality.CLIPPED


def test_compensation_takes_off_gradients():
    y, x = np.mgrid[:20, :30]
    frame = (1000 + 20 * x + 10 * y).astype(np.uint16)  # unpolarized, uneven light
    plain = kv.Processor().dolp(frame)[2:-2, 2:-2]
    evened = kv.Processor(compensation=4).dolp(frame)[2:-2, 2:-2]
    assert plain.min() > 0.005 and evened.max() < plain.min() / 4
    too_dark = kv.Processor(compensation=60000).flags(frame)
    assert (too_dark == kv.Quality.NOT_COMPENSATED).all()


def means_by_formula(frame, y, x, height, width):
    cells = frame[y : y + height, x : x + width].astype(float)
    values = [cells[row : height // 2 * 2 : 2, column : width // 2 * 2 : 2].mean()
              for row, column in ((0, 0), (0, 1), (1, 0), (1, 1))]  # fmt: skip
    light = {CELLS[0][(y + i // 2) % 2 * 2 + (x + i) % 2]: values[i] for i in range(4)}
    s1, s2 = light[0] - light[90], light[45] - light[135]
    s0 = sum(values) / 2
    return {
        "s0": s0, "s1": s1, "s2": s2, "dolp": np.hypot(s1, s2) / s0,
        "angle": np.degrees(np.arctan2(s2, s1)) / 2, "cells": width // 2 * (height // 2),
    }  # fmt: skip


@pytest.mark.parametrize("region", [(3, 2, 9, 6), (2, 1, 2, 2), None])
def test_regions_are_means_of_cells(region):
    frames = frames_of(2, 3)
    x, y, width, height = region or (0, 0, 22, 13)
    means = kv.Processor().region(frames, region)
    single = kv.Processor().region(frames[1, 2], region)
    assert isinstance(single.s0, np.float64) and isinstance(single.cells, np.int64)
    for place in np.ndindex(2, 3):
        for name, expected in means_by_formula(frames[place], y, x, height, width).items():
            found = getattr(means, name)
            assert found.shape == (2, 3)
            assert np.isclose(found[place], expected, rtol=1e-12), name
    assert single.dolp == means.dolp[1, 2] and np.isnan(single.dolp_sigma)


def test_masks_are_means_of_whole_cells():
    frame = frames_of()
    mask = np.zeros(frame.shape, bool)
    mask[2:8, 5:14] = True  # whole cells begin at even columns: 6 to 13
    for shape in (mask, mask.astype(np.uint8) * 9, mask[:, ::-1][:, ::-1]):
        means = kv.Processor(noise=NOISE).region(frame, mask=shape)
        assert means.cells == 12
        for name, expected in means_by_formula(frame, 2, 6, 6, 8).items():
            assert np.isclose(getattr(means, name), expected), name
    cells = frame[2:8, 6:14].astype(float)
    variance = (0.5 * cells + 1.5**2 + 1 / 12).sum() / 4 / 12**2
    assert np.isclose(means.s0_sigma, np.sqrt(variance), rtol=1e-6)


@pytest.mark.parametrize("rows, columns", [(13, 22), (300, 500)])
def test_threads_and_leading_axes_change_nothing(rows, columns):
    frames = frames_of(5, rows=rows, columns=columns)
    processor = kv.Processor(noise=NOISE, compensation=4)
    single = [processor.maps(frame, kv.MAPS, threads=1) for frame in frames]
    for threads in (None, 1, 2, 3):
        maps = processor.maps(frames[:, np.newaxis], kv.MAPS, threads=threads)
        region = processor.region(frames, (1, 1, 12, 12), threads=threads)
        for name in kv.MAPS:
            assert maps[name].shape == (5, 1, rows, columns)
            stacked = np.stack([each[name] for each in single])
            assert maps[name].tobytes() == stacked.tobytes(), name
        assert region.s0[3] == processor.region(frames[3], (1, 1, 12, 12)).s0
    assert processor.maps(frames[:0]).s0.shape == (0, rows, columns)
    assert processor.region(frames[:0]).cells.shape == (0,)


def test_out_is_filled_in_place():
    frames = frames_of(3)
    s0, quality = np.zeros(frames.shape, np.float32), np.zeros(frames.shape, np.uint8)
    processor = kv.Processor()
    expected = processor.maps(frames, ("s0", "quality"))
    for out in ((s0, quality), {"quality": quality}, kv.Maps(s0=s0)):
        s0[:], quality[:] = 0, 9
        maps = processor.maps(frames, ("s0", "quality"), out=out)
        assert maps.s0.tobytes() == expected.s0.tobytes()
        assert np.array_equal(maps.quality, expected.quality)
    assert maps.s0 is s0 and "s0: float32 (3, 13, 22)" in repr(maps)


FRAME = frames_of()


@pytest.mark.parametrize("measure, part", [
    (lambda p: p.maps(FRAME, "s3"), "no map 's3'; there are s0, s1, s2, dolp"),
    (lambda p: p.maps(FRAME, ()), "name one"),
    (lambda p: p.maps(FRAME, ("s0", "s0")), "named twice"),
    (lambda p: p.maps(FRAME, "s0", out=np.zeros(FRAME.shape)), "float32, not float64"),
    (lambda p: p.maps(FRAME, "s0", out=FRAME[:0]), "float32"),
    (lambda p: p._core.maps(FRAME, ["s0"], [], 0), "0 arrays for 1 maps"),
    (lambda p: p._core.transform(FRAME, ["dolp"], [], 9, 0), "0 arrays for 1 planes"),
    (lambda p: p.sigma(FRAME), "tell the sensor's gain and read noise"),
    (lambda p: p.stokes(FRAME.astype(float)), "numpy.uint16"),
    (lambda p: p.stokes(FRAME, threads=0), "threads must be 1 to 1024"),
    (lambda p: p.region(FRAME, (20, 0, 4, 4)), "not within the frame's 22 x 13"),
    (lambda p: p.region(FRAME, (0, 0, 2**31 - 1, 2**31 - 1)), "not within"),
    (lambda p: p.region(FRAME, (0, 0, 2, 2), mask=FRAME > 0), "both given"),
    (lambda p: p.region(FRAME, mask=FRAME[:-1] > 0), "the frames' 13 rows of 22"),
    (lambda p: p.region(FRAME, mask=FRAME), "bool or uint8, not uint16"),
    (lambda p: p.region(FRAME, mask=np.broadcast_to(True, (2**40, 2))), "(rows, columns)"),
    (lambda p: kv.Processor(noise=kv.SensorNoise(0, 1)), "gain above 0"),
    (lambda p: kv.Processor(noise=(1, 1)), "a SensorNoise, not tuple"),
    (lambda p: kv.Processor(clip_level=0), "1 to 65535"),
    (lambda p: kv.Processor(bad_pixels=FRAME), "bad_pixels must be of bool or uint8"),
    (lambda p: kv.Processor(bad_pixels=FRAME[2:] > 0).flags(FRAME), "does not cover the frame's"),
    (lambda p: kv.Processor(compensation=0).dolp(FRAME), "must be above 0"),
    (lambda p: kv.Processor(black_level=np.nan).dolp(FRAME), "black level is no number"),
])  # fmt: skip
def test_what_cannot_be_measured_is_refused(measure, part):
    with pytest.raises((TypeError, ValueError)) as error:
        measure(kv.Processor())
    assert part in str(error.value)


def test_processors_pickle_with_what_they_know():
    bad = FRAME > 2500
    processor = kv.Processor(90, black_level=64, noise=NOISE, bad_pixels=bad, compensation=5)
    again = pickle.loads(pickle.dumps(processor))
    for name, expected in processor.maps(FRAME, kv.MAPS).asdict().items():
        assert again.maps(FRAME, kv.MAPS)[name].tobytes() == expected.tobytes(), name
