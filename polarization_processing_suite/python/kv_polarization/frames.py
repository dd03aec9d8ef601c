# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Arguments that all functions on frames have."""

from __future__ import annotations

import operator
from typing import Optional, Union

import numpy as np
import numpy.typing as npt

Frames = npt.NDArray[Union[np.uint8, np.uint16]]


def thread_count(threads: Optional[int]) -> int:
    """As the toolkit takes it: 0 for all; below, what it refuses."""
    return 0 if threads is None else operator.index(threads) or -1
