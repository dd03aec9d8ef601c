# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Calls of the Python package whose arguments an input chooses. Each works, or throws an error that is promised."""

import os
import tempfile

import numpy as np

import kv_polarization as kv
from kv_polarization import _core, colours

PROMISED = (TypeError, ValueError, MemoryError, OSError, OverflowError, NotImplementedError)
FRAME_DTYPES = ["u1", "<u2", "<u2"]
DTYPES = ["u1", "<u2", ">u2", "i1", "i2", "u4", "f2", "f4", "f8",
          "c8", "?", "O", "S2", "M8[s]", [("a", "u2")]]  # fmt: skip
SIDES = [2, 3, 4, 5, 6, 8, 9, 16, 17, 0, 1, 33]
FOLDER = tempfile.mkdtemp(prefix="kv-fuzz-", dir="/dev/shm" if os.path.isdir("/dev/shm") else None)


class Choices:
    """The bytes of an input, handed out; zeros behind their end."""

    def __init__(self, data):
        self._bytes = iter(data)

    def byte(self):
        return next(self._bytes, 0)

    def below(self, count):
        return self.byte() % count

    def one_of(self, values):
        return values[self.below(len(values))]

    def once_in(self, rarity):
        return self.below(rarity) == rarity - 1

    def bytes(self, count):
        return bytes(self.byte() for _ in range(count))


class Liar:
    """Claims memory that is not its own."""

    __array_interface__ = {"shape": (64, 64), "typestr": "<u2", "data": (8, False), "version": 3}
    shape, dtype, strides, ndim = (64, 64), np.dtype(np.uint16), (128, 2), 2


def odd_value(c):
    numbers = [-1, 1 << 31, 1 << 70, -(1 << 70), float("nan"), float("inf"), np.uint16(3), True]
    texts = ["", "dolp", b"\xff", "\ud800", "a\0b"]
    return c.one_of([None, *numbers, *texts, (), [], {}, [1, "a"], object(), Liar(), np.zeros(0)])


def array(c, dtypes=FRAME_DTYPES):
    """An array of any shape, in memory that its strides walk through anyhow; now and then of any dtype."""
    dtype = np.dtype(c.one_of(DTYPES if c.once_in(8) else dtypes))
    shape = [c.one_of(SIDES) for _ in range(c.below(5) if c.once_in(4) else 2 + c.below(2))]
    if dtype.hasobject:
        return np.full(shape, c.byte(), dtype)
    size = int(np.prod(shape)) * dtype.itemsize
    offset = c.below(4) if c.once_in(4) else 0  # not aligned to its elements
    memory = np.resize(np.frombuffer(c.bytes(8), "u1"), size + offset)
    whole = np.ndarray(shape, dtype, memory, offset)
    way = c.below(12) if whole.ndim else 0
    if way == 1:
        whole = whole[::2]
    elif way == 2:
        whole = whole[..., ::-1]
    elif way == 3:
        whole = whole.T
    elif way == 4:
        whole = np.broadcast_to(whole, (2, *shape))
    elif way == 5:
        whole.flags.writeable = False
    elif way == 6:
        whole = np.lib.stride_tricks.as_strided(whole, shape, [0] * len(shape))
    return whole


def frames(c):
    return odd_value(c) if c.once_in(16) else array(c)


def number(c, usual):
    return odd_value(c) if c.once_in(16) else c.one_of(usual)


def names(c, table):
    if c.once_in(16):
        return odd_value(c)
    return [
        c.one_of([*table, "nothing"]) if c.once_in(16) else c.one_of(table)
        for _ in range(c.below(4) + 1)
    ]


def out(c):
    way = c.below(8)
    if way == 1:
        return array(c, ["<u2", "f4", "u1"])
    if way == 2:
        return [array(c, ["<u2", "f4"]) for _ in range(c.below(3))]
    if way == 3:
        return {c.one_of(kv.PLANES): array(c, ["<u2", "f4"])}
    return odd_value(c) if way == 5 else None


def threads(c):
    return number(c, [1, 2, None, 3])


def optional(c, table):
    """Some of the arguments of a table."""
    return {name: make(c) for name, make in table.items() if c.once_in(4)}


def numbers(*usual):
    return lambda c: number(c, usual)


KNOWN = {
    "bit_depth": numbers(12, 16, 8, 1, None), "left_aligned": numbers(False, True),
    "black_level": numbers(0, 10.5, 4000), "clip_level": numbers(None, 4095, 200),
}  # fmt: skip
PROCESSOR = {
    **KNOWN, "phase": numbers(0, 45, 90, 135, None), "origin": lambda c: number(c, [(0, 0), (1, 0), (3, 7)]),
    "rescue": numbers(False, True), "noise": lambda c: noise(c), "compensation": numbers(None, 4.0, 0),
    "weights": lambda c: array(c, ["f4", "f8"]) if c.once_in(4) else np.full((4, 4, 4), c.byte(), "f4"),
    "weights_everywhere": numbers(False, True), "bad_pixels": lambda c: array(c, ["u1", "?", "<u2"]),
    "calibration": lambda c: CALIBRATION if c.once_in(2) else odd_value(c),
}  # fmt: skip
REGION = {"region": lambda c: number(c, [None, (0, 0, 2, 2), (1, 1, 3, 2), (0, 0, 99, 1)]),
          "mask": lambda c: array(c, ["?", "u1", "f4"])}  # fmt: skip


def noise(c):
    return kv.SensorNoise(number(c, [0.4, 1.0]), number(c, [2.5, 0.0]))


def processor(c):
    return kv.Processor(**optional(c, PROCESSOR))


def transform(c):
    made = processor(c)
    given = frames(c)
    results = made.transform(
        given, names(c, kv.PLANES), out(c), threads(c), output_max=number(c, [65535, 255, 1])
    )
    for name, plane in results.asdict().items():
        assert plane.shape[: given.ndim] == given.shape, name


def maps(c):
    processor(c).maps(frames(c), names(c, kv.MAPS), out(c), threads(c))


def region(c):
    processor(c).region(frames(c), threads=threads(c), **optional(c, REGION))


def measures(c):
    made = processor(c)
    getattr(made, c.one_of(["stokes", "dolp", "angle", "sigma", "flags"]))(
        frames(c), threads=threads(c)
    )


def picture(c):
    limits = {
        "dolp_white": numbers(None, 0.5),
        "ratio_limit": numbers(None, 1.0),
        "legend": numbers(False, True),
    }
    kind = number(c, _core.PICTURE_KINDS)
    kv.pictures.picture(kind, frames(c), processor(c), **optional(c, limits))


def ranges(c):
    kv.pictures.ranges(frames(c), processor(c))
    kv.pictures.brightness(frames(c), processor(c))


def apply(c):
    options = {"origin": lambda c: number(c, [None, (0, 0), (2, 2)]), "per_cell": numbers(True, False),
               "rescue": numbers(False, True), "pedestal": numbers(0, 64), "flags": numbers(True, False),
               "left_aligned": numbers(False, True), "threads": threads}  # fmt: skip
    given = np.full((2, 8, 8), 16 * c.byte(), "u2") if c.once_in(2) else frames(c)
    CALIBRATION.apply(given, out(c), **optional(c, options))


def fit(c):
    stack = [
        np.full((4, 4), 256 + c.byte(), "u2") if c.once_in(2) else frames(c)
        for _ in range(c.below(6))
    ]
    angles = number(c, [[0, 45, 90, 135, 20, 70][: len(stack)], [0.0]])
    kv.Calibration.fit(stack, angles, **optional(c, {**KNOWN, "noise": noise, "threads": threads}))


def identify(c):
    options = {"angle_of_first": numbers(None, 10.0), "may_be_mirrored": numbers(True, False),
               "angle_error": numbers(3, 0), "region": REGION["region"], "bit_depth": KNOWN["bit_depth"]}  # fmt: skip
    kv.identify_mosaic(
        frames(c), frames(c), turn=number(c, [20.0, 0.0, 360.0]), **optional(c, options)
    )


def state(c):
    """What is pickled is believed as little as a file."""
    parts = list(CALIBRATION._core.__getstate__())
    for _ in range(c.below(3)):
        parts[c.below(len(parts))] = odd_value(c)
    try:
        type(CALIBRATION._core).__new__(type(CALIBRATION._core)).__setstate__(tuple(parts))
    except KeyError:
        pass  # of a field that is missing


def files(c):
    path = os.path.join(
        FOLDER, "a" + c.one_of([".png", ".tiff", ".npy", ".pgm", ".raw", ".none", ""])
    )
    texts = {"title": numbers("", "text"), "provenance": numbers("", "{}"), "bit_depth": KNOWN["bit_depth"],
             "compression": numbers(None, "none", "fast", "small")}  # fmt: skip
    kv.write(path, frames(c), **optional(c, texts))
    kv.read(path)
    kv.provenance_of(path)
    with kv.open_frames(path, raw=number(c, [None, kv.RawShape(4, 4, "Mono8")])) as opened:
        try:
            opened[number(c, [0, -1, slice(None), 1])]
        except IndexError:
            pass


def any_file(c):
    path = os.path.join(FOLDER, "any")
    with open(path, "wb") as stream:
        stream.write(c.one_of([b"P5 2 2 255\n", b"\x93NUMPY\1\0", b"II*\0", b""]) + c.bytes(80))
    with kv.open_frames(path, raw=number(c, [None, None, kv.RawShape(2, 2, "Mono12p")])) as opened:
        np.asarray(opened)


def hues(c):
    if c.once_in(2):
        colours.ratio_colours(frames(c))
    else:
        colours.angle_colours(frames(c), number(c, [1.0, 0.5]))


def calibration():
    """Of a sensor of 8 x 8 pixels, by frames of turned light."""
    row, column = np.mgrid[:8, :8]
    nominal = np.array([[0, 135], [45, 90]])[row % 2, column % 2]
    wobble = 1 + 0.01 * np.sin(row * 3 + column)
    angles = np.arange(0, 180, 10)
    stack = [np.uint16(np.rint(400 + 1200 * wobble * (1 + 0.98 * np.cos(np.radians(2 * (angle - nominal)))) / 2))
             for angle in angles]  # fmt: skip
    darks = [np.full((8, 8), 400, "u2"), np.full((8, 8), 402, "u2")]
    return kv.Calibration.fit(
        stack, angles, darks=darks, bit_depth=12, noise=kv.SensorNoise(0.4, 2.5), threads=1
    )


CALIBRATION = calibration()
CALLS = [transform, transform, maps, region, measures, picture, ranges, apply, fit, identify, state, files,
         any_file, hues]  # fmt: skip


def run(data):
    c = Choices(data)
    try:
        c.one_of(CALLS)(c)
    except PROMISED as error:
        assert str(error) or isinstance(error, MemoryError), repr(error)
    except UnicodeError:
        pass  # of names that no file can have; a ValueError
