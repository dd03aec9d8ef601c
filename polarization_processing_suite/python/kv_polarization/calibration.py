# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""What a sensor is, found from frames of known light, and taken off its frames."""

from __future__ import annotations

import os
from typing import Any, Dict, Iterable, NamedTuple, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from kv_polarization import _core
from kv_polarization.calibration_records import CalibrationFields
from kv_polarization.calibration_stack import Stack, angles_of
from kv_polarization.frames import Frames, thread_count
from kv_polarization.noise import SensorNoise, noise_numbers

Path = Union[str, "os.PathLike[str]"]


class CorrectedFrames(NamedTuple):
    """Frames as a sensor of equal gains and ideal polarizers would have taken them."""

    #: uint16, of 16 bits, of the shape of the raw ones; 65535 stands for clipped ones alone
    frames: npt.NDArray[np.uint16]
    #: bits of `Quality`, uint8, shared by the pixels of a 2x2 cell; None where not asked for
    flags: Optional[npt.NDArray[np.uint8]]
    #: a raw count is 2^gained_bits corrected ones; -1 to 15
    gained_bits: int


class Calibration(CalibrationFields):
    """A sensor as a fit found it: `Calibration.fit` and `Calibration.load` make one.

    Behind its polarizer a pixel of gain G, diattenuation D and orientation a reads, in counts above
    its black level, G / 2 (S0 + D cos(2a) S1 + D sin(2a) S2). Gains are relative to their mean;
    angles are in degrees, 0 along the rows, growing counter-clockwise, and their zero is the
    sensor's own.

    A calibration never changes, so that any number of threads may use it at the same time; it may
    be pickled, with its maps (29 bytes a pixel), and be used in forked processes.
    """

    def __init__(self, core: _core.Calibration) -> None:
        self._core = core

    @classmethod
    def fit(
        cls,
        frames: Iterable[Frames],
        angles: npt.ArrayLike,
        *,
        darks: Optional[Iterable[Frames]] = None,
        flats: Optional[Iterable[Frames]] = None,
        phase: int = 0,
        origin: Tuple[int, int] = (0, 0),
        bit_depth: Optional[int] = None,
        left_aligned: bool = False,
        threads: Optional[int] = None,
        noise: Optional[SensorNoise] = None,
        black_level: float = 0,
        clip_level: Optional[int] = None,
        source_dolp: float = 1,
        angles_known: bool = True,
        names: Optional[Sequence[str]] = None,
        camera: str = "",
        date: str = "",
    ) -> Calibration:
        """Finds what a sensor is from a stack of frames.

        `frames` are of uniform light behind a linear polarizer that is turned, at the `angles`, one
        in degrees for each, counter-clockwise as seen in the image. Three angles, modulo 180
        degrees, are the least; 36 or 72 over a half or full turn, 8 darks and 8 flats make a good
        stack. `darks` are without light at the same exposure, `flats` of the source without the
        polarizer.

        Each of the three is an array (n, rows, columns) of uint8 or uint16 with even sides, or any
        iterable of arrays (rows, columns), which are taken one after the other and not kept. A
        sequence may read its frames when it is asked for them: those that turn out not to fit are
        asked for a second time, to be taken out, which an iterator cannot do. What became of each
        is told by `frames` of the calibration.

        - `phase`, `origin`, `bit_depth`, `left_aligned`: as for `Processor`. The bit depth matters:
          frames of 12 bits in uint16 are clipped at 4095, which nobody tells but this.
        - `noise`: taken where the stack does not tell: the gain with 3 polarized frames or less,
          the read noise without two darks. By default 10,000 electrons at full scale and 2.5
          electrons.
        - `black_level`: counts of all pixels in the dark; without darks.
        - `clip_level`: the sample, black level included, from which on a pixel counts as clipped;
          the greatest one where None.
        - `source_dolp`: degree of polarization of the polarizer's light, above 0 up to 1, which the
          fit cannot tell from the pixels' diattenuations.
        - `angles_known`: False for a film turned by hand. The first frame's angle alone is believed
          then, and may be given alone; the others are found with the sensor. Wants 6 frames or more
          over half a turn, and flats, without which the lamp must be steady.
        - `names`: of the polarized frames, for the record; "frame 0" and so on where None.
        - `camera`, `date`: free texts for the record.

        Memory: 86 bytes a pixel. Time: some 20 ms a frame of 5 megapixels, and 2 s at the end. The
        interpreter's lock is held only while frames are fetched.

        Throws ValueError, in words: angles that do not determine the sensor, polarizers that do not
        lie as `phase` tells, frames of odd sides, values out of their range; TypeError for frames
        of another type. What `frames` throws passes through.
        """
        stack = Stack(frames, darks, flats, angles_of(angles), angles_known, names)
        terms = _core.FitTerms(
            phase=phase,
            origin=tuple(origin),
            bit_depth=bit_depth,
            left_aligned=left_aligned,
            threads=thread_count(threads),
            noise=noise_numbers(noise),
            black_level=black_level,
            clip_level=clip_level,
            source_dolp=source_dolp,
            angles_known=angles_known,
            camera=camera,
            date=date,
        )
        return cls(_core.fit(stack, stack.again, terms))

    @classmethod
    def load(cls, path: Path) -> Calibration:
        """Reads NAME.json, with its maps NAME.MAP.npy beside it, and believes nothing of them.

        Throws OSError, whose text names the file, what is wrong, and what would be right.
        """
        return cls(_core.Calibration.load(path))

    def save(self, path: Path) -> None:
        """Writes NAME.json, and its maps NAME.MAP.npy beside it, in place of those of that name.

        Throws ValueError for a name that does not end in .json, OSError where it cannot be written.
        """
        self._core.save(path)

    def apply(
        self,
        frames: Frames,
        out: Optional[npt.NDArray[np.uint16]] = None,
        *,
        origin: Optional[Tuple[int, int]] = None,
        per_cell: bool = True,
        rescue: bool = False,
        pedestal: int = 0,
        left_aligned: bool = False,
        flags: bool = False,
        threads: Optional[int] = None,
    ) -> CorrectedFrames:
        """Corrected frames: those that a sensor of equal gains and ideal polarizers had taken.

        A `Processor` with the calibration does this by itself, and understands the result; this is
        for other software.

        - `frames`: an array (..., rows, columns) of uint8 or uint16, of the calibration's bit
          depth.
        - `out`: the uint16 array to fill, of the same shape; it may share no memory with `frames`.
        - `origin`: column and row on the sensor of the frames' first pixel. The calibration's where
          None. Frames must lie within the calibrated region.
        - `per_cell`: a correction of its own for each 2x2 cell; else one for all, by the means of
          the four classes of pixels.
        - `rescue`: solves a cell with one clipped sample from the other three.
        - `pedestal`: what black becomes, 0 to 32767 corrected counts. With 0, results below black
          become 0, so that means of dark places come out too high.
        - `left_aligned`: whether samples lie in the highest bits of the elements.
        - `flags`: whether to tell cells that were clipped, rescued or bad.

        What the last call made ready is kept for the next one of such frames: 10 bytes a pixel.

        Throws TypeError for arrays of another type, ValueError for frames of another bit depth or
        beyond the calibrated region, values out of their range, and an `out` that cannot be filled.
        """
        return CorrectedFrames(
            *self._core.apply(
                frames,
                out,
                origin=origin,
                per_cell=per_cell,
                rescue=rescue,
                pedestal=pedestal,
                left_aligned=left_aligned,
                flags=flags,
                threads=thread_count(threads),
            )
        )

    def report(self) -> str:
        """A page of HTML that tells a person whether the calibration is good; up to 1.5 megabytes.

        It is complete in itself: it asks for no other file and runs no script.
        """
        return str(self._core.report())

    def save_report(self, path: Path) -> None:
        """Writes the page to a file. Throws OSError where that cannot be done."""
        self._core.save_report(path)

    def weights(self) -> npt.NDArray[np.float32]:
        """The mean sensor as weights of a `Processor`, float32 of the shape (4, 4, 4).

        They take off what the four classes of pixels differ by, and know no black level.
        """
        weights: npt.NDArray[np.float32] = self._core.weights()
        return weights

    @property
    def maps(self) -> Dict[str, npt.NDArray[Any]]:
        """What each pixel is: read-only arrays (rows, columns) in the calibration's own memory.

        - `black`: float32, counts.
        - `gain`, `diattenuation`: float32.
        - `orientation`: float32, degrees from the nominal angle.
        - `gain_error`, `diattenuation_error`, `orientation_error`: their standard errors.
        - `bad`: uint8, 0 for a good pixel, else the sum of 1 clipped in a frame that was used, 2
          residuals far beyond the noise, 4 values far from those of its class, 8 black level or
          dark noise far from those of its class.
        """
        return dict(self._core.maps)

    def __repr__(self) -> str:
        used = sum(frame.used for frame in self.frames)
        good = sum(finding.good for finding in self.findings)
        camera = f", camera {self.camera!r}" if self.camera else ""
        return (
            f"Calibration({self.width} x {self.height} pixels from {self.origin}, "
            f"phase {self.phase}, {self.bit_depth} bits, {used} of {len(self.frames)} frames used, "
            f"{good} of {len(self.findings)} checks good{camera})"
        )

    def __reduce__(self) -> Tuple[Any, ...]:
        return Calibration, (self._core,)
