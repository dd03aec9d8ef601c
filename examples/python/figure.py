# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Draws intensity, DoLP and angle of a frame onto one sheet.

    python3 figure.py sheet.png                         a simulated frame
    python3 figure.py sheet.png frame.pgm --phase 90   the first frame of a file
"""

import argparse

import matplotlib
import numpy as np

import kv_polarization as kv

matplotlib.use("Agg")  # draws into files, without a display
from kv_polarization import plot  # noqa: E402

MOSAIC = np.array([[0, 135], [45, 90]])  # the polarizers of phase 0


def simulated_frame(rows=512, columns=640):
    """A glossy ball before a sky: 12-bit samples behind the polarizers of phase 0."""
    y, x = np.mgrid[:rows, :columns]
    right, up = (x - columns / 2) / (0.4 * rows), (rows / 2 - y) / (0.4 * rows)
    radius = np.hypot(right, up)
    ball = radius < 1
    # Light reflected from a ball is polarized along its rim, and most where it is tilted.
    angle = np.where(ball, np.arctan2(up, right) + np.pi / 2, np.radians(20))
    dolp = np.where(ball, 0.6 * radius**3, 0.15 + 0.2 * y / rows)
    light = np.where(ball, 900 + 1800 * np.exp(-12 * np.hypot(right + 0.3, up - 0.4)), 2400 - y)
    polarizer = np.radians(np.tile(MOSAIC, (rows // 2, columns // 2)))
    samples = light / 2 * (1 + dolp * np.cos(2 * (polarizer - angle)))
    noise = np.random.default_rng(1).normal(0, 6, samples.shape)
    return np.clip(np.rint(samples + noise), 0, 4095).astype(np.uint16)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("sheet", help="the picture to write")
    parser.add_argument("frame", nargs="?", help="a file of raw frames")
    parser.add_argument("--phase", type=int, default=0, choices=(0, 45, 90, 135))
    options = parser.parse_args()
    if options.frame is None:
        frame, bit_depth, title = simulated_frame(), 12, "A simulated frame"
    else:
        with kv.open_frames(options.frame) as frames:
            frame, bit_depth, title = frames[0], frames.bit_depth, options.frame
    processor = kv.Processor(options.phase, bit_depth=bit_depth)
    plot.sheet(frame, processor, title=title).savefig(options.sheet, dpi=100)


if __name__ == "__main__":
    main()
