# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""The toolkit as it is in C++. The modules around it are the interface, and tell what arguments are."""

import os
from typing import Any, Callable, Dict, Iterable, List, Optional, Sequence, Tuple

import numpy as np
import numpy.typing as npt

PICTURE_KINDS: Tuple[str, ...]
PIXEL_FORMATS: Tuple[str, ...]
__version__: str

class Calibration:
    @staticmethod
    def load(path: os.PathLike[str] | str) -> Calibration: ...
    @property
    def maps(self) -> Dict[str, npt.NDArray[Any]]: ...
    def apply(
        self,
        frames: object,
        out: object,
        *,
        origin: Optional[Tuple[int, int]],
        per_cell: bool,
        rescue: bool,
        pedestal: int,
        left_aligned: bool,
        flags: bool,
        threads: int,
    ) -> Tuple[npt.NDArray[np.uint16], Optional[npt.NDArray[np.uint8]], int]: ...
    def fields(self) -> Dict[str, Any]: ...
    def report(self) -> str: ...
    def save(self, path: os.PathLike[str] | str) -> None: ...
    def save_report(self, path: os.PathLike[str] | str) -> None: ...
    def weights(self) -> npt.NDArray[np.float32]: ...
    def __getstate__(self) -> Tuple[Any, ...]: ...
    def __setstate__(self, arg0: Tuple[Any, ...]) -> None: ...

class FitPart:
    def __init__(self, plan: FitPlan) -> None: ...
    def add(self, frame: object, number: int) -> None: ...
    def finish(self, again: Callable[[int], Any]) -> Calibration: ...
    def merge(self, part: npt.NDArray[np.uint8]) -> None: ...
    def to_bytes(self) -> npt.NDArray[np.uint8]: ...

class FitPlan:
    def __init__(
        self,
        stack: Sequence[Tuple[int, float, str]],
        read: Callable[[int], Any],
        terms: FitTerms,
    ) -> None: ...
    def __getstate__(self) -> Tuple[Any, ...]: ...
    def __setstate__(self, arg0: Tuple[Any, ...]) -> None: ...

class FitTerms:
    def __init__(
        self,
        *,
        phase: int,
        origin: Tuple[int, ...],
        bit_depth: Optional[int],
        left_aligned: bool,
        threads: int,
        noise: Optional[Tuple[float, float]],
        black_level: float,
        clip_level: Optional[int],
        source_dolp: float,
        angles_known: bool,
        camera: str,
        date: str,
    ) -> None: ...

class FrameFile:
    def __init__(
        self, path: os.PathLike[str] | str, raw: Optional[Tuple[int, int, str]]
    ) -> None: ...
    @property
    def count(self) -> int: ...
    def read(self, index: int) -> Tuple[npt.NDArray[np.uint16], int, List[str]]: ...

class Pictures:
    def brightness(self, frame: object) -> npt.NDArray[np.uint16]: ...
    def picture(
        self,
        frame: object,
        kind: str,
        *,
        dolp_white: Optional[float],
        ratio_limit: Optional[float],
        legend: bool,
    ) -> npt.NDArray[np.uint8]: ...
    def ranges(self, frame: object) -> Tuple[float, float]: ...

class Processor:
    def __init__(
        self,
        *,
        phase: int,
        origin: Tuple[int, ...],
        calibration: Optional[Calibration],
        bit_depth: Optional[int],
        left_aligned: bool,
        black_level: float,
        clip_level: Optional[int],
        rescue: bool,
        noise: Optional[Tuple[float, float]],
        bad_pixels: object,
        compensation: Optional[float],
        weights: object,
        weights_everywhere: bool,
    ) -> None: ...
    def maps(
        self, frames: object, maps: Sequence[str], out: Sequence[object], threads: int
    ) -> List[npt.NDArray[Any]]: ...
    def pictures(self) -> Pictures: ...
    def region(
        self, frames: object, region: Optional[Sequence[int]], mask: object, threads: int
    ) -> Dict[str, npt.NDArray[Any]]: ...
    def transform(
        self,
        frames: object,
        planes: Sequence[str],
        out: Sequence[object],
        output_max: int,
        threads: int,
    ) -> List[npt.NDArray[Any]]: ...

def angle_colours(
    degrees: npt.ArrayLike, strengths: npt.ArrayLike, kind: str
) -> npt.NDArray[np.uint8]: ...
def build_info() -> Dict[str, Any]: ...
def fit(stack: Iterable[Any], again: Callable[[int], Any], terms: FitTerms) -> Calibration: ...
def identify_mosaic(
    first: object,
    second: object,
    *,
    turn: float,
    angle_of_first: Optional[float],
    may_be_mirrored: bool,
    origin: Tuple[int, ...],
    region: Optional[Sequence[int]],
    black_level: float,
    angle_error: float,
    bit_depth: Optional[int],
    left_aligned: bool,
) -> Dict[str, Any]: ...
def provenance(path: os.PathLike[str] | str) -> Optional[str]: ...
def ratio_colours(ratios: npt.ArrayLike) -> npt.NDArray[np.uint8]: ...
def read(path: os.PathLike[str] | str) -> npt.NDArray[Any]: ...
def write(
    path: os.PathLike[str] | str,
    image: object,
    *,
    bit_depth: Optional[int],
    title: str,
    provenance: str,
    compression: Optional[str],
) -> None: ...
