#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Calibrates a sensor that is made up here, and compares what it measures before and after.

    calibrate.py

A stack of your own goes the same way: read() each of its files, or hand over any array.
"""

import numpy as np

import kv_polarization as kv

ROWS, COLUMNS, BLACK, PHASE = 128, 160, 40.0, 0
random = np.random.default_rng(2)

# What is wrong with each pixel of the sensor: by per cents, per cents and degrees.
polarizers = np.tile([[0.0, 135.0], [45.0, 90.0]], (ROWS // 2, COLUMNS // 2))
gain = random.normal(1, 0.02, polarizers.shape) * np.where(polarizers == 90, 0.97, 1.0)
diattenuation = np.minimum(random.normal(0.96, 0.01, polarizers.shape), 1)
orientation = polarizers + random.normal(0, 0.5, polarizers.shape)


def frame(level, dolp, angle):
    """What the sensor takes of uniform light: 12 bits, 2.5 electrons a count."""
    light = 1 + dolp * diattenuation * np.cos(2 * np.radians(orientation - angle))
    electrons = 2.5 * gain * level / 2 * light
    counts = BLACK + random.normal(random.poisson(electrons), 4) / 2.5
    return np.clip(counts.round(), 0, 4095).astype(np.uint16)


angles = np.arange(0, 180, 5)
calibration = kv.Calibration.fit(
    [frame(3000, 1.0, angle) for angle in angles],
    angles,
    darks=[frame(0, 0, 0) for _ in range(8)],
    flats=[frame(3000, 0, 0) for _ in range(8)],
    phase=PHASE,
    bit_depth=12,
)
calibration.save("camera.json")
calibration.save_report("camera.html")
for finding in calibration.findings:
    mark = " " if finding.good else "!"
    print(f"{mark} {finding.name}: {finding.found:.3g} {finding.unit} ({finding.verdict})")

# The same light, before and after. An ideal sensor would see the film's DoLP and angle alike
# everywhere; what scatters is the sensor, and the noise of one cell.
film = frame(2500, 0.6, 20.0)
for name, processor in {
    "before": kv.Processor(phase=PHASE, bit_depth=12, black_level=BLACK),
    "after": kv.Processor(calibration=calibration),
}.items():
    dolp, angle = processor.dolp(film), processor.angle(film)
    print(
        f"{name:7} DoLP {dolp.mean():.4f}, scatter {dolp.std():.4f}; "
        f"angle {angle.mean():.3f}, scatter {angle.std():.3f} degrees"
    )
