# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""What a `Calibration` tells of its frames, of the sensor, and of itself."""

from __future__ import annotations

import dataclasses
import functools
from typing import Any, Dict, NamedTuple, Tuple

from kv_polarization.noise import SensorNoise


class Measured(NamedTuple):
    """A value and its standard error, by the noise of the frames."""

    value: float
    error: float


@dataclasses.dataclass(frozen=True)
class PixelClass:
    """The pixels behind polarizers of one nominal orientation."""

    nominal_angle: int  #: 0, 45, 90 or 135 degrees
    pixels: int  #: good ones
    black: Measured  #: counts, mean
    gain: Measured  #: mean, relative to that of all good pixels
    diattenuation: Measured  #: mean, 0 to about 1
    orientation: Measured  #: degrees, mean, within 90 of the nominal angle
    gain_scatter: float  #: standard deviation from pixel to pixel, noise taken off
    diattenuation_scatter: float  #: likewise
    orientation_scatter: float  #: likewise, degrees

    @classmethod
    def of(cls, fields: Dict[str, Any]) -> PixelClass:
        measured = {key: Measured(**x) for key, x in fields.items() if isinstance(x, dict)}
        return cls(**{**fields, **measured})


@dataclasses.dataclass(frozen=True)
class FrameRecord:
    """What became of a frame of the stack."""

    name: str  #: as it was given
    kind: str  #: "polarized", "dark" or "flat"
    angle: float  #: of the polarizer as given or solved, degrees; 0 for other kinds
    used: bool
    refusal: str  #: why it was not used; empty if it was
    level: float  #: mean of the samples, counts above black
    class_means: Tuple[float, float, float, float]  #: of 0, 45, 90, 135 degrees, black included
    angle_deviation: float  #: degrees by which its light is off `angle`, by all frames
    excess: float  #: its deviation from the other frames over that of noise: about 1 if it fits

    @classmethod
    def of(cls, fields: Dict[str, Any]) -> FrameRecord:
        values: Dict[str, Any] = {**fields, "class_means": tuple(fields["class_means"])}
        return cls(**values)


@dataclasses.dataclass(frozen=True)
class Finding:
    """A line of the verdict: what was found, what noise alone would give, what that means."""

    name: str
    found: float
    expected: float  #: 0 where noise has no say
    unit: str  #: empty for pure numbers
    good: bool  #: False where a careful user would look twice
    verdict: str  #: one line for people


class CalibrationFields:
    """All of a `Calibration` but its maps."""

    _core: Any

    @functools.cached_property
    def _fields(self) -> Dict[str, Any]:
        return dict(self._core.fields())

    @property
    def width(self) -> int:
        """Columns of the calibrated region, even."""
        return int(self._fields["width"])

    @property
    def height(self) -> int:
        """Rows of the calibrated region, even."""
        return int(self._fields["height"])

    @property
    def phase(self) -> int:
        """Degrees of the polarizer before the sensor's top left pixel: 0, 45, 90 or 135."""
        return int(self._fields["mosaic"]["phase"])

    @property
    def origin(self) -> Tuple[int, int]:
        """Column and row on the sensor of the region's first pixel."""
        mosaic = self._fields["mosaic"]
        return mosaic["x_origin"], mosaic["y_origin"]

    @property
    def bit_depth(self) -> int:
        """Significant bits of a sample, 1 to 16."""
        return int(self._fields["bit_depth"])

    @property
    def clip_level(self) -> int:
        """The sample from which on a pixel counts as clipped, in counts, black included."""
        return int(self._fields["clip_level"])

    @property
    def noise(self) -> SensorNoise:
        """As the frames told it, or as it was given."""
        return SensorNoise(**self._fields["noise"])

    @property
    def source_offset(self) -> float:
        """Degrees that the source's zero lies counter-clockwise of the sensor's."""
        return float(self._fields["source_offset"])

    @property
    def source_dolp(self) -> float:
        """Taken for the polarizer's light: diattenuations are relative to it."""
        return float(self._fields["source_dolp"])

    @property
    def angles_solved(self) -> bool:
        """Whether the source's angles were unknown but for one."""
        return bool(self._fields["angles_solved"])

    @property
    def condition(self) -> float:
        """Of the mean measured analyser matrix: 1.414 for ideal polarizers, more for worse ones."""
        return float(self._fields["condition"])

    @property
    def camera(self) -> str:
        """Free text of the user: model and serial number."""
        return str(self._fields["camera"])

    @property
    def date(self) -> str:
        """As the user gave it."""
        return str(self._fields["date"])

    @property
    def software(self) -> str:
        """Name and version of what made it."""
        return str(self._fields["software"])

    @functools.cached_property
    def classes(self) -> Tuple[PixelClass, ...]:
        """The four classes of pixels: those of 0, 45, 90 and 135 degrees."""
        return tuple(PixelClass.of(fields) for fields in self._fields["classes"])

    @functools.cached_property
    def frames(self) -> Tuple[FrameRecord, ...]:
        """What became of each frame: darks first, then flats, then polarized ones."""
        return tuple(FrameRecord.of(fields) for fields in self._fields["frames"])

    @functools.cached_property
    def findings(self) -> Tuple[Finding, ...]:
        """The verdict, line by line."""
        return tuple(Finding(**fields) for fields in self._fields["findings"])
