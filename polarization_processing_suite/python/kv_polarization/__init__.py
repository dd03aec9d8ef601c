"""Planes of polarization cameras, exact and fast, on numpy arrays."""

from kv_polarization._core import __version__
from kv_polarization.files import provenance_of, read, write
from kv_polarization.frame_file import PIXEL_FORMATS, FrameFile, RawShape, open_frames
from kv_polarization.info import build_info
from kv_polarization.planes import PLANES, Planes
from kv_polarization.processor import Processor

__all__ = ["PLANES", "Planes", "Processor", "__version__", "build_info"]
__all__ += ["PIXEL_FORMATS", "FrameFile", "RawShape", "open_frames"]
__all__ += ["provenance_of", "read", "write"]
