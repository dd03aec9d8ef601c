#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Planes and maps of one raw frame.

    one_frame.py [FRAME]     without a frame, of a film at 30 degrees that is made up here
"""

import sys

import numpy as np

import kv_polarization as kv


def film(rows=200, columns=320, angle=30.0, dolp=0.7):
    """A frame of 12 bits, phase 0: a film before the middle of a light that is not polarized."""
    polarizers = np.tile([[0, 135], [45, 90]], (rows // 2, columns // 2))
    light = 2500 / 2 * (1 + dolp * np.cos(2 * np.radians(polarizers - angle)))
    frame = np.full((rows, columns), 1250.0)
    middle = slice(rows // 4, -rows // 4), slice(columns // 4, -columns // 4)
    frame[middle] = light[middle]
    return np.random.default_rng(1).normal(frame, 8).round().astype(np.uint16)


frame = kv.read(sys.argv[1]) if len(sys.argv) > 1 else film()
processor = kv.Processor(phase=0, bit_depth=12)

# 16-bit planes, exact and fast.
planes = processor.transform(frame, ("intensity", "azimuth", "dolp"))
for name, plane in planes.asdict().items():
    kv.write(f"{name}.png", plane)

# Floats, for measurements.
rows, columns = frame.shape
middle = processor.region(frame, (columns // 2 - 20, rows // 2 - 20, 40, 40))
print(f"in the middle: DoLP {middle.dolp:.3f}, angle {middle.angle:.1f} degrees")
print(f"everywhere: mean DoLP {np.nanmean(processor.dolp(frame)):.3f}")
