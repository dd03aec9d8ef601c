# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Planes of dask arrays: frames larger than memory, on the cores of one machine or of many.

Needs dask alone beyond the package itself; zarr, HDF5 and TIFF are read by what dask reads them
with. docs/cluster.md tells how to choose chunks and how to start workers.
"""

from __future__ import annotations

import functools
import math
import operator
import warnings
from typing import Any, Dict, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt
from dask.array.blockwise import blockwise
from dask.array.core import Array, PerformanceWarning
from dask.base import normalize_token
from dask.delayed import delayed

from kv_polarization._dask_fit import calibrate
from kv_polarization.calibration import Calibration
from kv_polarization.frames import Frames
from kv_polarization.planes import Planes
from kv_polarization.processor import Processor

__all__ = ["CHUNK_BYTES", "calibrate", "transform"]

#: A chunk's frames and planes together, in bytes, above which `transform` warns. A worker holds one
#: such chunk for each of its threads, and usually has 2 to 4 GiB for each.
CHUNK_BYTES = 1 << 30


def transform(
    frames: Array,
    processor: Optional[Processor] = None,
    planes: Union[str, Sequence[str]] = ("intensity", "dolp"),
    *,
    output_max: int = 65535,
) -> Planes:
    """The planes of frames, as dask arrays: nothing is read or computed until they are asked for.

    `frames` is a dask array (..., rows, columns) of uint8 or uint16, from wherever, with each frame
    in one chunk. The planes have its chunks, and the dtypes, shapes and bytes that
    `Processor.transform` gives; `planes` and `output_max` are those of it, and the processor is
    `Processor()` where None.

        planes = transform(dask.array.from_zarr("night.zarr"), Processor(90), ("intensity", "dolp"))
        planes.dolp[0].compute()                 # one frame
        (in_memory,) = dask.compute(planes)      # Planes of numpy arrays
        dask.array.store([planes.intensity, planes.dolp], [a, b], lock=False)

    One task reads a chunk and makes all its planes, on one thread, as dask runs a task a core.
    Planes that are computed together share it; planes computed by calls of their own are made anew
    each time. So name those that are needed, and compute them together. The processor travels to
    each worker once in a computation (with the scheduler "processes", with every task).

    Equal calls give equal keys, in other processes too.

    Throws TypeError for frames that are no dask array, or of another dtype, and ValueError for
    frames in several chunks, for sides that are not known, and for all that `Processor.transform`
    refuses: it is given a frame of zeros first. Warns by `dask.array.PerformanceWarning` of chunks
    larger than `CHUNK_BYTES`.
    """
    processor = Processor() if processor is None else processor
    names = (planes,) if isinstance(planes, str) else tuple(planes)
    _check_chunks(frames)
    zeros = np.zeros(frames.shape[-2:], frames.dtype)
    of_zeros = processor.transform(zeros, names, threads=1, output_max=output_max).asdict()
    _warn_of_size(frames, zeros.nbytes + sum(plane.nbytes for plane in of_zeros.values()))

    axes = tuple(range(frames.ndim))
    # Each chunk is the tuple of its planes.
    chunks = blockwise(
        functools.partial(_planes_of_chunk, names, output_max),
        axes,
        frames,
        axes,
        delayed(processor, pure=True),
        None,
        token="transform",
        dtype=object,
        meta=np.empty((0,) * frames.ndim, object),
    )
    arrays: Dict[str, Any] = {}
    for index, name in enumerate(names):
        beyond = of_zeros[name].shape[2:]  # the axis of a pair
        pair = {frames.ndim + axis: size for axis, size in enumerate(beyond)}
        arrays[name] = blockwise(
            operator.itemgetter(index),
            axes + tuple(pair),
            chunks,
            axes,
            token=name,
            new_axes=pair,
            dtype=of_zeros[name].dtype,
            meta=np.empty((0,) * (frames.ndim + len(pair)), of_zeros[name].dtype),
        )
    return Planes(**arrays, output_max=output_max)


def _planes_of_chunk(
    names: Tuple[str, ...], output_max: int, frames: Frames, processor: Processor
) -> Tuple[npt.NDArray[np.generic], ...]:
    """In the order of the names; a tuple, as dask knows its size in memory."""
    planes = processor.transform(frames, names, threads=1, output_max=output_max)
    return tuple(planes[name] for name in names)


def _check_chunks(frames: Array) -> None:
    """Refuses all but whole frames, without computing anything."""
    if not isinstance(frames, Array):
        raise TypeError(
            f"frames must be a dask array, not {type(frames).__name__}; dask.array.from_array "
            "makes one, and Processor.transform takes numpy arrays"
        )
    if frames.ndim < 2:
        raise ValueError(
            "frames must have two axes or more, (..., rows, columns), not the shape "
            f"{frames.shape}"
        )
    if any(math.isnan(side) for side in frames.shape[-2:]):
        raise ValueError(
            f"rows and columns of frames of the shape {frames.shape} are not known; "
            "frames.compute_chunk_sizes() finds them"
        )
    if frames.numblocks[-2:] != (1, 1):
        raise ValueError(
            "a frame must lie in one chunk, as pixels need their neighbours, not in {} x {}; "
            "frames.rechunk({{-1: -1, -2: -1}}) joins them".format(*frames.numblocks[-2:])
        )


def _warn_of_size(frames: Array, bytes_a_frame: int) -> None:
    most = math.prod(max(sizes) for sizes in frames.chunks[:-2])
    if most * bytes_a_frame > CHUNK_BYTES:  # never where sizes are not known, as NaN
        fitting = max(CHUNK_BYTES // bytes_a_frame, 1)
        warnings.warn(
            f"a chunk of {most} frames and their planes takes {most * bytes_a_frame / 2**30:.1f} "
            f"GiB of memory for each thread of a worker; chunks of {fitting} frames stay below "
            f"{CHUNK_BYTES / 2**30:g} GiB",
            PerformanceWarning,
            stacklevel=3,
        )


def _token_of(known: Union[Processor, Calibration]) -> Tuple[str, Any]:
    """What equal ones have in common, in all processes."""
    state = known.__reduce__()[1] if isinstance(known, Processor) else known._core.__getstate__()
    return type(known).__name__, normalize_token(state)


normalize_token.register((Processor, Calibration), _token_of)
