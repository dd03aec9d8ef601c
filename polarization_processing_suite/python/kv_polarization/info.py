# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""What the package is, and what it finds on the machine."""

from __future__ import annotations

from typing import Any, Dict

from kv_polarization import _core


def build_info() -> Dict[str, Any]:
    """What computes here, for bug reports and records of measurements.

    - `version`: of the package and the library, which are made together.
    - `compiler`, `flags`: what made them, for example "GNU 12.2.0" and "Release -O2".
    - `instruction_sets`: a list of those that the library and its modules have code for.
    - `options`: how the build was configured, "ON" or "OFF"; `libraries`: what it takes in, linked or
      as headers, with versions; an empty one is not known.
    - `library`, `vector_module`, `logger`: their files; None where one is not found.
    - `processor`: its name; `cores`: how many of them run at once.
    - `tier`: "baseline", "avx2" or "avx512", what the processor has.
    - `kernels`: "sse2", "sse41", "avx2" or "avx512", what computes planes. All compute the same
      planes; bits of scaled planes and of azimuth may differ from another maker's processor.
    - `formats`: whether this build reads and writes each of the image formats.
    """
    return dict(_core.build_info())
