# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""How far the samples of a sensor scatter."""

from __future__ import annotations

import dataclasses
from typing import Optional, Tuple


@dataclasses.dataclass(frozen=True)
class SensorNoise:
    """Both numbers are on a sensor's data sheet, or come from a photon transfer measurement."""

    gain: float  #: counts per electron, above 0
    read_noise: float  #: electrons, standard deviation of a sample in the dark, from 0 up


def noise_numbers(noise: Optional[SensorNoise]) -> Optional[Tuple[float, float]]:
    if noise is None:
        return None
    if not isinstance(noise, SensorNoise):
        raise TypeError(f"noise must be a SensorNoise, not {type(noise).__name__}")
    return noise.gain, noise.read_noise
