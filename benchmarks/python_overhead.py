#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""What a call from Python costs beside the same call from C, and beside the planes in numpy.

    PYTHONPATH=build/release/python benchmarks/python_overhead.py

One thread. The C call goes through ctypes, whose own cost, of an empty function with as many
arguments, is taken off. All are timed in turns in one run; the least and the median of the turns
are told.
"""

import ctypes
import statistics
import time

import numpy as np

import kv_polarization as kv

try:
    import numba
except ImportError:
    numba = None

PLANES = ("intensity", "azimuth", "dolp")
BITS = 12


class CLibrary:
    """The library as C has it; phase 0, 12 bits."""

    def __init__(self):
        self.library = ctypes.CDLL(kv.build_info()["library"])
        prefix = "kv_polarization_processor_"
        self.library[prefix + "module_initialize"]()
        self.handle = ctypes.c_void_p()
        self.library[prefix + "create_polarization_processor"](ctypes.byref(self.handle))
        self.call = self.library[prefix + "transform"]
        pointer, number = ctypes.c_void_p, ctypes.c_int
        self.call.argtypes = [pointer, number, pointer, number, number, number, number, number,
                              ctypes.c_uint16, *[pointer] * 6]  # fmt: skip
        self.empty = ctypes.CDLL(None).getpid
        self.empty.argtypes = self.call.argtypes

    def arguments(self, frame, out):
        rows, columns = frame.shape
        planes = [out[name].ctypes.data if name in out else None for name in kv.PLANES]
        return (self.handle, 0, frame.ctypes.data, 0, 0, columns, rows, BITS, 65535, *planes)


def with_numpy(frame, scale):
    """The usual way: interpolation by neighbours, float32, arctan2 and hypot."""
    padded = np.pad(frame.astype(np.float32), ((0, 1), (0, 1)), mode="symmetric")
    i0, i135 = np.empty_like(frame, np.float32), np.empty_like(frame, np.float32)
    i45, i90 = np.empty_like(i0), np.empty_like(i0)
    places = {(0, 0): i0, (0, 1): i135, (1, 0): i45, (1, 1): i90}
    for row in (0, 1):
        for column in (0, 1):
            for down in (0, 1):
                for right in (0, 1):
                    target = places[(row + down) % 2, (column + right) % 2]
                    source = padded[row + down :, column + right :]
                    part = target[row::2, column::2]
                    part[...] = source[::2, ::2][: part.shape[0], : part.shape[1]]
    s1, s2 = i0 - i90, i45 - i135
    s0 = (i0 + i45 + i90 + i135) / 2
    angle = np.arctan2(s2, s1) / (2 * np.pi) * 65535 + 32767.5
    with np.errstate(divide="ignore", invalid="ignore"):
        dolp = np.hypot(s1, s2) / s0 * 65535
    return (
        np.minimum(s0 * scale, 65535).astype(np.uint16),
        angle.astype(np.uint16),
        np.nan_to_num(np.minimum(dolp, 65535)).astype(np.uint16),
    )


def loops_of_numba():
    """The same in a loop that numba compiles, for one thread."""

    @numba.njit(fastmath=False)
    def planes(frame, scale, intensity, azimuth, dolp):
        rows, columns = frame.shape
        for row in range(rows):
            below = row + 1 if row + 1 < rows else row - 1
            for column in range(columns):
                right = column + 1 if column + 1 < columns else column - 1
                even_row, even_column = row % 2 == 0, column % 2 == 0
                top, bottom = (row, below) if even_row else (below, row)
                left, beside = (column, right) if even_column else (right, column)
                i0, i135 = np.float32(frame[top, left]), np.float32(frame[top, beside])
                i45, i90 = np.float32(frame[bottom, left]), np.float32(frame[bottom, beside])
                s0 = (i0 + i45 + i90 + i135) * np.float32(0.5)
                s1, s2 = i0 - i90, i45 - i135
                intensity[row, column] = min(s0 * scale, np.float32(65535))
                angle = np.arctan2(s2, s1) * np.float32(0.5 / np.pi) + np.float32(0.5)
                azimuth[row, column] = angle * np.float32(65535)
                ratio = np.sqrt(s1 * s1 + s2 * s2) / s0 if s0 > 0 else np.float32(0)
                dolp[row, column] = min(ratio, np.float32(1)) * np.float32(65535)

    return planes


def seconds_in_turns(ways, turns, repeats):
    """The least and the median seconds of a call of each way."""
    times = {name: [] for name in ways}
    for way in ways.values():
        way()
    for _ in range(turns):
        for name, way in ways.items():
            began = time.perf_counter()
            for _ in range(repeats):
                way()
            times[name].append((time.perf_counter() - began) / repeats)
    return {name: (min(all_), statistics.median(all_)) for name, all_ in times.items()}


def compare(rows, columns, turns, repeats, unit, factor):
    frame = np.random.default_rng(1).integers(0, 1 << BITS, (rows, columns), np.uint16)
    out = {name: np.empty_like(frame) for name in PLANES}
    library, processor = CLibrary(), kv.Processor(bit_depth=BITS)
    arguments = library.arguments(frame, out)
    scale = np.float32(65535 / ((1 << BITS) - 1))
    ways = {
        "empty ctypes call": lambda: library.empty(*arguments),
        "C call through ctypes": lambda: library.call(*arguments),
        "transform, out=": lambda: processor.transform(frame, PLANES, out, 1),
        "transform": lambda: processor.transform(frame, PLANES, None, 1),
        "numpy": lambda: with_numpy(frame, scale),
    }
    if numba:
        loops = loops_of_numba()
        ways["numba"] = lambda: loops(frame, scale, *out.values())
    results = seconds_in_turns(ways, turns, repeats)
    print(f"{columns} x {rows}, {', '.join(PLANES)}; {unit}: least, median of {turns} turns")
    for name, (least, median) in results.items():
        print(f"  {name:24}{least * factor:10.2f}{median * factor:10.2f}")
    for index, which in enumerate(("least", "median")):
        empty, call, ours = (results[name][index] for name in list(ways)[:3])
        print(f"  more than the C call ({which}): {(ours - call + empty) * factor:.2f} {unit}")


compare(64, 64, 200, 50, "microseconds", 1e6)
compare(2048, 2448, 15, 1, "milliseconds", 1e3)
