"""Planes of polarization cameras, exact and fast, on numpy arrays."""

from kv_polarization.planes import PLANES, Planes
from kv_polarization.processor import Processor

__all__ = ["PLANES", "Planes", "Processor"]
