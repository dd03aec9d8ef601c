# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Planes of polarization cameras, exact and fast, on numpy arrays."""

from kv_polarization import pictures
from kv_polarization._core import __version__
from kv_polarization.calibration import Calibration, CorrectedFrames
from kv_polarization.calibration_records import Finding, FrameRecord, Measured, PixelClass
from kv_polarization.files import provenance_of, read, write
from kv_polarization.frame_file import PIXEL_FORMATS, FrameFile, RawShape, open_frames
from kv_polarization.identify import MosaicCandidate, MosaicIdentity, identify_mosaic
from kv_polarization.info import build_info
from kv_polarization.maps import MAPS, Maps, Quality, RegionMeans, Stokes
from kv_polarization.noise import SensorNoise
from kv_polarization.planes import PLANES, Planes
from kv_polarization.processor import Processor

__all__ = ["PLANES", "Planes", "Processor", "__version__", "build_info"]
__all__ += ["MAPS", "Maps", "Quality", "RegionMeans", "SensorNoise", "Stokes"]
__all__ += ["Calibration", "CorrectedFrames", "Finding", "FrameRecord", "Measured", "PixelClass"]
__all__ += ["MosaicCandidate", "MosaicIdentity", "identify_mosaic"]
__all__ += ["PIXEL_FORMATS", "FrameFile", "RawShape", "open_frames", "provenance_of"]
__all__ += ["pictures", "read", "write"]
