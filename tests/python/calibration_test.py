# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Calibrations of a sensor simulated here, and what they make of its frames."""

import concurrent.futures
import json
import multiprocessing
import pickle

import numpy as np
import pytest

import kv_polarization as kv

ROWS, COLUMNS, BLACK, GAIN = 48, 64, 60, 0.4  # counts, counts per electron
ANGLES = np.arange(24) * 15.0
NOMINAL = np.tile([[90, 45], [135, 0]], (ROWS // 2, COLUMNS // 2))  # phase 90
random = np.random.default_rng(3)
SENSOR = {
    "gain": random.normal(1, 0.03, NOMINAL.shape) + 0.02 * (NOMINAL == 45),
    "diattenuation": random.normal(0.97, 0.004, NOMINAL.shape),
    "orientation": random.normal(0, 1.5, NOMINAL.shape),
}


def raw(s0, dolp=1.0, angle=0.0, seed=None):
    """A frame of 12 bits, with noise where there is a seed."""
    of_pixel = np.radians(NOMINAL + SENSOR["orientation"])
    share = 1 + SENSOR["diattenuation"] * dolp * np.cos(2 * (np.radians(angle) - of_pixel))
    counts = SENSOR["gain"] / SENSOR["gain"].mean() * s0 / 2 * share
    if seed is not None:
        random = np.random.default_rng(seed)
        counts = random.poisson(counts / GAIN) * GAIN + random.normal(0, 2 * GAIN, counts.shape)
    return np.clip(np.rint(counts + BLACK), 0, 4095).astype(np.uint16)


FRAMES = np.stack([raw(3000, 1, angle, seed) for seed, angle in enumerate(ANGLES)])
DARKS = np.stack([raw(0, seed=100 + i) for i in range(8)])
FLATS = np.stack([raw(2500, 0, seed=200 + i) for i in range(4)])
STACK = {"darks": DARKS, "flats": FLATS, "phase": 90, "bit_depth": 12}


@pytest.fixture(scope="module")
def calibration():
    return kv.Calibration.fit(FRAMES, ANGLES, **STACK, camera="made up", date="2026-01-02")


def test_fit_finds_the_sensor(calibration):
    good = calibration.maps["bad"] == 0
    assert good.mean() > 0.99
    truth = {
        "gain": SENSOR["gain"] / SENSOR["gain"].mean(),
        "diattenuation": SENSOR["diattenuation"],
        "orientation": SENSOR["orientation"] - SENSOR["orientation"].mean(),
    }
    for name, tolerance in {"gain": 0.01, "diattenuation": 0.015, "orientation": 0.5}.items():
        error = (calibration.maps[name] - truth[name])[good]
        assert error.std() < tolerance and abs(error.mean()) < tolerance / 5, name
        assert 0.7 < error.std() / calibration.maps[name + "_error"].mean() < 1.4, name
    assert abs(calibration.maps["black"] - BLACK).mean() < 0.5
    assert abs(calibration.noise.gain / GAIN - 1) < 0.05
    assert abs(calibration.noise.read_noise - 2) < 0.2


def test_fit_tells_what_it_is_of(calibration):
    assert (calibration.width, calibration.height) == (COLUMNS, ROWS)
    assert (calibration.phase, calibration.origin) == (90, (0, 0))
    assert (calibration.bit_depth, calibration.clip_level) == (12, 4095)
    assert (calibration.camera, calibration.date) == ("made up", "2026-01-02")
    assert 1.41 < calibration.condition < 1.5 and abs(calibration.source_offset) < 0.2
    assert [part.nominal_angle for part in calibration.classes] == [0, 45, 90, 135]
    at_45 = SENSOR["gain"][NOMINAL == 45].mean() / SENSOR["gain"].mean()
    assert abs(calibration.classes[1].gain.value - at_45) < 0.003
    kinds = [frame.kind for frame in calibration.frames]
    assert kinds == ["dark"] * 8 + ["flat"] * 4 + ["polarized"] * 24
    assert [frame.angle for frame in calibration.frames[12:]] == list(ANGLES)
    assert all(frame.used for frame in calibration.frames) and calibration.findings
    assert "64 x 48 pixels from (0, 0), phase 90, 12 bits, 36 of 36" in repr(calibration)
    with pytest.raises(ValueError, match="read-only"):
        calibration.maps["gain"][0, 0] = 1


class Lazy:
    """Reads a frame when it is asked for it, and remembers which."""

    def __init__(self, frames):
        self.frames, self.asked = frames, []

    def __len__(self):
        return len(self.frames)

    def __getitem__(self, index):
        self.asked.append(index)
        return self.frames[index].copy()


class Iterable:
    def __iter__(self):
        return iter(list(WRONG))


WRONG = FRAMES.copy()
WRONG[7] = raw(3000, 1, 40, 7)  # told to be at 105 degrees


def test_frames_that_do_not_fit_are_read_again_and_taken_out():
    lazy = Lazy(WRONG)
    results = [
        kv.Calibration.fit(frames, ANGLES, **STACK, threads=threads)
        for frames, threads in ((lazy, 1), (WRONG, 2), (list(WRONG), None), (Iterable(), 3))
    ]
    assert lazy.asked[:24] == list(range(24)) and 7 in lazy.asked[24:]
    for result in results:
        assert [frame.name for frame in result.frames if not frame.used] == ["frame 7"]
        for name, found in result.maps.items():
            assert found.tobytes() == results[0].maps[name].tobytes(), name
    without = kv.Calibration.fit(np.delete(FRAMES, 7, 0), np.delete(ANGLES, 7), **STACK)
    assert np.allclose(results[0].maps["gain"], without.maps["gain"], atol=1e-4)
    with pytest.raises(ValueError, match="polarized frame 7 .* an iterator gives its frames only"):
        kv.Calibration.fit(iter(WRONG), ANGLES, **STACK)


def test_one_known_angle_is_enough():
    names = [f"turned {i}" for i in range(24)]
    found = kv.Calibration.fit(FRAMES, 0, **STACK, angles_known=False, names=names)
    off = np.array([frame.angle for frame in found.frames[12:]]) - ANGLES
    assert abs((off + 90) % 180 - 90).max() < 0.3
    assert found.angles_solved and found.frames[13].name == "turned 1"


def broken():
    yield FRAMES[0]
    raise RuntimeError("the camera is off")


@pytest.mark.parametrize("arguments, part", [
    (dict(frames=FRAMES[:2], angles=ANGLES[:2]), "must be 3 or more"),
    (dict(angles=ANGLES[:5]), "5 angles for 6 or more polarized frames"),
    (dict(angles=np.arange(25)), "25 angles for 24 polarized frames"),
    (dict(names=["a"]), "1 names for 2 or more"),
    (dict(phase=0), "mosaic"),
    (dict(frames=FRAMES[:, :-1], darks=None, flats=None), "must be even"),
    (dict(frames=FRAMES.astype(float)), "numpy.uint16"),
    (dict(frames=FRAMES[:, np.newaxis]), "frame 0 has 3 axes; it must have two"),
    (dict(frames=[list(frame) for frame in FRAMES]), "must be a numpy array"),
    (dict(source_dolp=2), "above 0, up to 1"),
    (dict(clip_level=70000), "1 to 65535"),
    (dict(threads=-1), "1 to 1024"),
    (dict(frames=broken()), "the camera is off"),
])  # fmt: skip
def test_what_cannot_be_fitted_is_refused(arguments, part):
    with pytest.raises((TypeError, ValueError, RuntimeError)) as error:
        kv.Calibration.fit(**{"frames": FRAMES, "angles": ANGLES, **STACK, **arguments})
    assert part in str(error.value)


def test_files_and_pickles_bring_it_back(calibration, tmp_path):
    calibration.save(tmp_path / "camera.json")
    assert json.loads((tmp_path / "camera.json").read_text())["camera"] == "made up"
    assert np.array_equal(np.load(tmp_path / "camera.gain.npy"), calibration.maps["gain"])
    loaded = kv.Calibration.load(str(tmp_path / "camera.json"))
    pickled = pickle.loads(pickle.dumps(calibration))
    for again in (loaded, pickled):
        assert repr(again) == repr(calibration)
        assert (again.classes, again.frames) == (calibration.classes, calibration.frames)
        assert (again.findings, again.noise) == (calibration.findings, calibration.noise)
        for name, expected in calibration.maps.items():
            assert again.maps[name].tobytes() == expected.tobytes(), name
    calibration.save_report(tmp_path / "camera.html")
    assert (tmp_path / "camera.html").read_text() == calibration.report()
    (tmp_path / "camera.gain.npy").unlink()
    with pytest.raises(OSError, match="camera.gain.npy"):
        kv.Calibration.load(tmp_path / "camera.json")
    with pytest.raises(ValueError, match="must end in .json"):
        calibration.save(tmp_path / "camera.txt")


def corrected(frame, calibration):
    """By the formula, cell by cell, in raw counts above black."""
    maps = calibration.maps

    def analyser(gain, diattenuation, angle):
        twice = np.radians(2 * angle)
        rows = [np.ones_like(twice), diattenuation * np.cos(twice), diattenuation * np.sin(twice)]
        return gain[..., None] / 2 * np.stack(rows, -1)

    def cells(values):
        shape = (ROWS // 2, 2, COLUMNS // 2, 2)
        return values.astype(float).reshape(shape).transpose(0, 2, 1, 3).reshape(-1, 4)

    nominal = cells(NOMINAL)
    measured = analyser(cells(maps["gain"]), cells(maps["diattenuation"]),
                        nominal + cells(maps["orientation"]))  # fmt: skip
    ideal = analyser(np.ones(nominal.shape), 1, nominal)
    light = cells(frame) - cells(maps["black"])
    result = (ideal @ np.linalg.pinv(measured) @ light[..., None])[..., 0]
    by_cell = result.reshape(ROWS // 2, COLUMNS // 2, 2, 2)
    return by_cell.transpose(0, 2, 1, 3).reshape(NOMINAL.shape)


def test_apply_solves_every_cell(calibration):
    frames = np.stack([[raw(2000, 0.5, angle, i) for i in range(3)] for angle in (10, 70)])
    result = calibration.apply(frames, pedestal=500, flags=True)
    assert result.gained_bits == 3 and result.frames.shape == frames.shape
    good = (calibration.maps["bad"] == 0) & (result.flags == 0).all(axis=(0, 1))
    assert good.mean() > 0.98
    for place in np.ndindex(2, 3):
        expected = corrected(frames[place], calibration) * 8 + 500
        assert abs(result.frames[place] - expected)[good].max() < 2.5
    out = np.zeros((2, 3, 2, ROWS, COLUMNS), np.uint16)
    again = calibration.apply(frames, out[:, :, 1], pedestal=500, threads=2)
    assert again.flags is None and np.shares_memory(again.frames, out)
    assert np.array_equal(out[:, :, 1], result.frames) and not out[:, :, 0].any()
    part = calibration.apply(frames[0, 0, 10:31, 6:40], origin=(6, 10), pedestal=500)
    assert np.array_equal(part.frames[:20], result.frames[0, 0, 10:30, 6:40])
    shifted = calibration.apply(frames[0, 0] << 4, pedestal=500, left_aligned=True)
    assert np.array_equal(shifted.frames, result.frames[0, 0])


@pytest.mark.parametrize("arguments, part", [
    (dict(frames=FRAMES[..., :-2], origin=(4, 0)), "within the calibrated 64 x 48"),
    (dict(origin=(-1, 0)), "from 0 up"),
    (dict(pedestal=40000), "0 to 32767"),
    (dict(frames=FRAMES.astype(np.uint8)), "bit"),
    (dict(out=FRAMES), "shares memory with the frames"),
    (dict(out=FRAMES[:1].copy()), "the shape (24, 48, 64)"),
])  # fmt: skip
def test_what_cannot_be_corrected_is_refused(calibration, arguments, part):
    with pytest.raises(ValueError) as error:
        calibration.apply(**{"frames": FRAMES, **arguments})
    assert part in str(error.value)


def test_processors_measure_the_light(calibration, tmp_path):
    frames = np.stack([raw(2000, 0.5, angle, 50) for angle in (-60, 0, 35)])
    calibration.save(tmp_path / "camera.json")
    known = kv.Processor(calibration=tmp_path / "camera.json")
    assert (known.phase, known.origin, known.bit_depth) == (90, (0, 0), 12)
    means = known.region(frames)
    stokes = known.stokes(frames)
    assert abs(means.s0 - 2000).max() < 6 and abs(stokes.s0.mean((1, 2)) - 2000).max() < 6
    assert abs(means.dolp - 0.5).max() < 0.004
    assert abs(means.angle - [-60, 0, 35]).max() < 0.3
    plain = kv.Processor(90, bit_depth=12, black_level=BLACK, noise=calibration.noise)
    for name in ("dolp", "angle"):
        spread, uneven = (p.maps(frames, name)[name].std((1, 2)) for p in (known, plain))
        assert (spread < uneven * 0.8).all(), name
    sigma = known.sigma(frames)
    assert np.allclose(stokes.s0[2].std(), sigma.s0_sigma[2].mean(), rtol=0.15)
    assert np.allclose(sigma.s0_sigma, plain.sigma(frames).s0_sigma, rtol=0.1)
    dolp = known.transform(frames, "dolp").dolp / 65535
    assert abs(np.median(dolp, (1, 2)) - 0.5).max() < 0.01
    for threads in (1, 2):
        again = known.maps(frames, kv.MAPS, threads=threads)
        assert again.angle.tobytes() == known.angle(frames).tobytes()


def test_bad_and_clipped_pixels_of_a_calibrated_sensor(calibration):
    frame = raw(2000, 0.5, 20, 60)
    frame[11, 21] = 4095
    bad = np.zeros(NOMINAL.shape, bool)
    bad[30, 40] = bad[30, 41] = True  # of one cell, which cannot be solved
    bad[40, 8] = True
    frame[bad] = 0
    processor = kv.Processor(calibration=calibration, bad_pixels=bad, rescue=True)
    flags = processor.flags(frame)
    rescued = kv.Quality.CLIPPED | kv.Quality.RESCUED
    assert (flags[10:12, 20:22] == rescued).all()
    assert (flags[30:32, 40:42] & kv.Quality.BAD_PIXEL).all()
    assert (flags[40:42, 8:10] == kv.Quality.RESCUED).all()
    means = processor.region(frame, (0, 0, COLUMNS, ROWS))
    masked = processor.region(frame, mask=np.ones(frame.shape, bool))
    assert (means.clipped, means.rescued, means.bad, means.left_out) == (1, 1, 1, 1)
    assert means.cells == masked.cells and means.clipped == masked.clipped
    assert abs(processor.dolp(frame)[40, 8] - 0.5) < 0.05
    unsaved = kv.Processor(calibration=calibration, bad_pixels=bad).region(frame)
    assert (unsaved.clipped, unsaved.rescued, unsaved.left_out) == (1, 0, 2)


@pytest.mark.parametrize("arguments, part", [
    (dict(phase=0), "the phase is 0, that of the calibration 90"),
    (dict(bit_depth=10), "the bit depth is 10, that of the calibration 12"),
    (dict(black_level=3), "are the calibration's"),
    (dict(noise=kv.SensorNoise(1, 1)), "are the calibration's"),
    (dict(bad_pixels=np.zeros((40, 64), bool)), "does not cover the calibrated 64 x 48"),
])  # fmt: skip
def test_contradictions_of_the_calibration_are_refused(calibration, arguments, part):
    with pytest.raises(ValueError) as error:
        kv.Processor(calibration=calibration, **arguments)
    assert part in str(error.value)


def test_frames_of_another_size_do_no_harm(calibration):
    processor = kv.Processor(calibration=calibration)
    expected = processor.dolp(FRAMES[0])
    for frame in (FRAMES[0, :20], FRAMES[0].astype(np.uint8), np.zeros((90, 90), np.uint16)):
        try:
            processor.dolp(frame)
        except ValueError:
            pass
        assert processor.dolp(FRAMES[0]).tobytes() == expected.tobytes()


def median_dolp(processor):
    return float(np.median(processor.dolp(FRAMES[:2], threads=2)))


def test_threads_and_processes_share_a_calibration(calibration):
    processor = kv.Processor(calibration=calibration)
    expected = median_dolp(processor)
    calibration.apply(FRAMES, threads=2)
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        assert set(pool.map(median_dolp, [processor] * 8)) == {expected}
        applied = list(pool.map(lambda _: calibration.apply(FRAMES, threads=2), range(8)))
        assert len({result.frames.tobytes() for result in applied}) == 1
    for method in ("fork", "spawn"):
        with multiprocessing.get_context(method).Pool(1) as pool:
            assert pool.map(median_dolp, [processor]) == [expected]


def test_weights_are_the_mean_sensor(calibration):
    weights = calibration.weights()
    assert weights.shape == (4, 4, 4) and weights.dtype == np.float32
    frame = raw(2000, 0.6, 30) - np.uint16(BLACK)
    processor = kv.Processor(90, bit_depth=12, weights=weights, weights_everywhere=True)
    dolp = processor.transform(frame, "dolp").dolp / 65535
    assert abs(np.median(dolp) - 0.6) < 0.01


@pytest.mark.parametrize("turn, angle, told", [(45, 10, 1), (45, None, 0), (90, None, 0)])
def test_mosaics_are_identified(turn, angle, told):
    first, second = raw(3000, 0.9, 10, 1), raw(3000, 0.9, 10 + turn, 2)
    found = kv.identify_mosaic(
        first, second, turn=turn, angle_of_first=angle, bit_depth=12, black_level=BLACK
    )
    assert found.is_told == told and found.verdict
    assert len(found.candidates) == 8 or len(found.candidates) == 4
    if told:
        assert found.candidates[0][:2] == (90, False) and found.candidates[0].confidence > 0.99
    assert np.allclose(found.dolp, 0.9 * 0.97, atol=0.01) and found.imbalance < 0.02
    with pytest.raises(ValueError, match="size"):
        kv.identify_mosaic(first, second[:-2], turn=45)
