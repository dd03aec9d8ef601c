# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Calls with random arguments: each works, or throws one of the errors that are promised."""

import resource

import hypothesis
import numpy as np
from hypothesis import strategies as st

import kv_polarization as kv

# Memory that huge shapes ask for is refused here, not taken from the machine.
resource.setrlimit(resource.RLIMIT_AS, (3 << 30, 3 << 30))
PROMISED = (TypeError, ValueError, MemoryError)
counts = {"worked": 0, "refused": 0}


class Liar:
    """Claims memory that is not its own."""

    __array_interface__ = {
        "shape": (64, 64), "typestr": "<u2", "data": (8, False), "version": 3,
    }  # fmt: skip
    shape, dtype, strides, ndim = (64, 64), np.dtype(np.uint16), (128, 2), 2


class LyingArray(np.ndarray):
    """An array of two samples that claims to be large."""

    shape, strides, size, nbytes = (4096, 4096), (8192, 2), 1 << 24, 1 << 25


DTYPES = ["u1", "<u2", ">u2", "i1", "i2", "u4", "f2", "f4", "f8", "c8", "?", "O", "S2", "M8[s]",
          [("a", "u2")]]  # fmt: skip
SIDES = st.one_of(st.integers(0, 6), st.integers(7, 70), st.sampled_from([1 << 20, 1 << 21]))


@st.composite
def arrays(draw, dtypes=DTYPES):
    """Arrays of any dtype, in memory of their own that their strides may walk through anyhow."""
    dtype = np.dtype(draw(st.sampled_from(dtypes)))
    shape = draw(st.lists(SIDES, max_size=4))
    plain = draw(st.booleans()) and np.prod(shape, dtype=float) < 1e6
    strides = [draw(st.integers(-40, 40)) * dtype.itemsize for _ in shape]
    reach = sum(abs(stride) * max(0, side - 1) for side, stride in zip(shape, strides))
    if reach >= 2048 * dtype.itemsize:
        strides = [0] * len(shape)
    try:
        if plain:
            array = np.asarray(np.flip(np.zeros(shape, dtype), range(1, len(shape), 2)))
            return array.T if draw(st.booleans()) else array
        middle = np.zeros(4096, dtype)[2048 if any(stride < 0 for stride in strides) else 0 :]
        return np.lib.stride_tricks.as_strided(middle, shape, strides)
    except ValueError:  # more elements than there are addresses
        hypothesis.reject()


FRAMES = st.one_of(
    arrays(["u1", "<u2"]), arrays(), st.builds(Liar), st.none(), st.text(),
    st.builds(lambda: np.zeros((1, 2), np.uint16).view(LyingArray)),
    st.builds(lambda: [[1, 2], [3, 4]]), st.builds(memoryview, st.binary(min_size=1)),
)  # fmt: skip


def rarely(odd, usual):
    return st.integers(0, 5).flatmap(lambda number: odd if number == 0 else usual)


SMALL = st.builds(
    lambda rows, columns: np.full((2, rows, columns), 900, np.uint16),
    st.integers(4, 9), st.integers(4, 9),
)  # fmt: skip
NUMBERS = st.one_of(st.none(), st.integers(-2, 20), st.sampled_from([-1 << 70, 1 << 31, 1 << 70]))
NAMES = st.one_of(
    st.lists(st.sampled_from([*kv.PLANES, "nothing", ""]), max_size=7), st.text(), NUMBERS
)
WEIGHTS = st.one_of(
    st.none(),
    st.builds(lambda value: np.full((4, 4, 4), value, np.float32), st.floats(width=32)),
    arrays(["f4", "f8"]), st.builds(Liar),
)


@hypothesis.settings(max_examples=1500, deadline=None, database=None, derandomize=True,
                     suppress_health_check=list(hypothesis.HealthCheck))  # fmt: skip
@hypothesis.given(
    frames=FRAMES,
    planes=NAMES,
    out=st.one_of(st.none(), st.none(), arrays(["<u2", "f4"]),
                  st.lists(arrays(["<u2"]), max_size=2),
                  st.dictionaries(st.sampled_from(kv.PLANES), arrays(["<u2", "f4"]), max_size=2),
                  FRAMES),
    phase=st.sampled_from([0, 45, 90, 135, 1, None, "0"]),
    origin=st.one_of(st.none(), st.tuples(NUMBERS, NUMBERS), st.text()),
    bit_depth=NUMBERS, output_max=st.one_of(st.just(65535), NUMBERS), threads=NUMBERS,
    weights=WEIGHTS, everywhere=st.booleans(),
)  # fmt: skip
def calls(frames, planes, out, phase, origin, bit_depth, output_max, threads, weights, everywhere):
    try:
        processor = kv.Processor(
            phase, origin, bit_depth=bit_depth, weights=weights, weights_everywhere=everywhere
        )
        results = processor.transform(frames, planes, out, threads, output_max=output_max)
    except PROMISED as error:
        counts["refused"] += 1
        assert str(error) or isinstance(error, MemoryError)
    else:
        counts["worked"] += 1
        for name, plane in results.asdict().items():
            assert plane.shape[: frames.ndim] == frames.shape, name


@hypothesis.settings(max_examples=600, deadline=None, database=None, derandomize=True,
                     suppress_health_check=list(hypothesis.HealthCheck))  # fmt: skip
@hypothesis.given(
    frames=rarely(FRAMES, SMALL),
    maps=rarely(NAMES, st.lists(st.sampled_from(kv.MAPS), min_size=1, max_size=4, unique=True)),
    region=rarely(st.lists(NUMBERS), st.one_of(st.none(), st.tuples(*[st.integers(0, 7)] * 4))),
    mask=rarely(arrays(["u1", "?", "f4"]), st.none()),
    bad_pixels=rarely(arrays(["u1", "?", "<u2"]), st.none()),
    odd_number=st.one_of(st.floats(), NUMBERS), place=st.integers(0, 9), rescue=st.booleans(),
)  # fmt: skip
def measures(frames, maps, region, mask, bad_pixels, odd_number, place, rescue):
    numbers = [16, 4000, 0.4, 2.5, 4]
    if place < len(numbers):
        numbers[place] = odd_number
    black, clip, gain, read_noise, least_mean = numbers
    try:
        processor = kv.Processor(
            bad_pixels=bad_pixels, black_level=black, clip_level=clip, rescue=rescue,
            noise=None if gain is None else kv.SensorNoise(gain, read_noise),
            compensation=least_mean,
        )  # fmt: skip
        processor.maps(frames, maps)
        processor.region(frames, region, mask=mask)
    except PROMISED as error:
        counts["refused"] += 1
        assert str(error) or isinstance(error, MemoryError)
    else:
        counts["worked"] += 1


@hypothesis.settings(max_examples=300, deadline=None, database=None, derandomize=True)
@hypothesis.given(
    shape=st.lists(st.integers(0, 9), min_size=2, max_size=4),
    steps=st.lists(st.sampled_from([1, 2, -1]), min_size=4, max_size=4),
    dtype=st.sampled_from([np.uint8, np.uint16]),
    planes=st.lists(st.sampled_from(kv.PLANES), min_size=1, unique=True),
)
def good_calls(shape, steps, dtype, planes):
    """Mostly right ones, whose results are those of plain copies."""
    frames = np.arange(4 * np.prod(shape), dtype=np.int64).astype(dtype)
    frames = np.resize(frames, [2 * side for side in shape])
    frames = frames[tuple(slice(None, None, step) for step in steps[: len(shape)])]
    try:
        results = kv.Processor().transform(frames, planes)
    except ValueError:
        counts["refused"] += 1
        return
    counts["worked"] += 1
    copies = kv.Processor().transform(frames.copy(), planes, threads=1)
    for name in planes:
        assert results[name].tobytes() == copies[name].tobytes()


calls()
measures()
good_calls()
print(f"calls that worked: {counts['worked']}, that were refused: {counts['refused']}")
assert min(counts.values()) > 100, counts
