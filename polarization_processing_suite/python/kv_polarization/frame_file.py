# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Raw frames in files, one at a time."""

from __future__ import annotations

import dataclasses
import operator
import os
from typing import Any, Iterator, NamedTuple, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from kv_polarization import _core
from kv_polarization._paths import Path, named_errors, plain

#: The names of all pixel formats of headerless frames, as GenICam has them. Left-aligned words,
#: which have no name there, end in `Left`.
PIXEL_FORMATS: Tuple[str, ...] = _core.PIXEL_FORMATS

Frame = npt.NDArray[Union[np.uint8, np.uint16]]


@dataclasses.dataclass(frozen=True)
class RawShape:
    """The shape of headerless frames, which lie one behind the other, each from a new byte on.

    `width` and `height` are in pixels, 1 to 2**20; `pixel_format` is one of `PIXEL_FORMATS`.
    """

    width: int
    height: int
    pixel_format: str = "Mono16"

    def _arguments(self) -> Tuple[int, int, str]:
        return operator.index(self.width), operator.index(self.height), self.pixel_format


class _About(NamedTuple):
    shape: Tuple[int, ...]
    dtype: np.dtype[Any]
    bit_depth: int
    notes: Tuple[str, ...]


def open_frames(path: Path, *, raw: Optional[RawShape] = None) -> FrameFile:
    """The raw frames of a grey file, one at a time; with `raw`, of a headerless one.

    Errors: FileNotFoundError, PermissionError and IsADirectoryError; OSError for files that are
    damaged, truncated or no frames; ValueError for a `raw` that no frame has, TypeError for one
    that is no RawShape; RuntimeError for a pipe, whose frames cannot be chosen.
    """
    return FrameFile(path, raw)


class FrameFile:
    """The raw frames of a file, as a sequence of arrays (rows, columns).

    `frames[i]` reads a frame, of uint8 where its samples are of 8 bits at most, else of uint16, the
    significant bits being the lowest ones. `frames[a:b]` reads several into one array (frames,
    rows, columns), and further indices choose from what was read, as in `frames[:, ::2, ::2]`. No
    more memory is needed than what is asked for takes, and one frame.

    Any number of threads may read, one at a time. A file pickles as its path, and forked processes
    open it anew. Frames may differ in size and type; arrays of several cannot.

    Errors: IndexError where there is no such frame; OSError for a frame that is damaged, while
    others can still be read; ValueError for frames that differ in one array, and after `close`.
    """

    def __init__(self, path: Path, raw: Optional[RawShape] = None) -> None:
        if raw is not None and not isinstance(raw, RawShape):
            raise TypeError(f"raw must be a RawShape, not {type(raw).__name__}")
        self._path = plain(path)
        self._raw = raw
        self._first: Optional[_About] = None
        self._opened: Optional[Tuple[int, Any]] = self._open()

    def _open(self) -> Tuple[int, Any]:
        with named_errors(self._path):
            arguments = None if self._raw is None else self._raw._arguments()
            return os.getpid(), _core.FrameFile(self._path, arguments)

    def _reader(self) -> Any:
        opened = self._opened
        if opened is None:
            raise ValueError(f"{self._path}: the file is closed; open_frames opens it again")
        # Parent and child would share one position in the file, and perhaps a lock for ever.
        if opened[0] != os.getpid():
            opened = self._opened = self._open()
        return opened[1]

    def _read(self, place: int) -> Tuple[Frame, _About]:
        reader = self._reader()
        with named_errors(self._path):
            frame, bit_depth, notes = reader.read(place)
        about = _About(frame.shape, frame.dtype, bit_depth, tuple(notes))
        if place == 0:
            self._first = about
        return frame, about

    def _of_first(self) -> _About:
        return self._first or self._read(0)[1]

    def _stack(self, places: Sequence[int]) -> Frame:
        if len(places) == 0:
            first = self._of_first()
            return np.empty((0, *first.shape), first.dtype)
        frame, about = self._read(places[0])
        frames = np.empty((len(places), *about.shape), about.dtype)
        frames[0] = frame
        for row, place in enumerate(places[1:], 1):
            frame, other = self._read(place)
            if other[:2] != about[:2]:
                raise ValueError(
                    f"{self._path}: frame {place} is {other.dtype} of {other.shape}, frame "
                    f"{places[0]} {about.dtype} of {about.shape}, so that one array cannot hold "
                    "both; read them one by one"
                )
            frames[row] = frame
        return frames

    @property
    def path(self) -> str:
        """As it was given."""
        return self._path

    @property
    def shape(self) -> Tuple[int, ...]:
        """(frames, rows, columns), where all frames are like the first one."""
        return (len(self), *self._of_first().shape)

    @property
    def ndim(self) -> int:
        """The axes of `shape`."""
        return 3

    @property
    def dtype(self) -> np.dtype[Any]:
        """uint8 or uint16, that of the first frame."""
        return self._of_first().dtype

    @property
    def bit_depth(self) -> int:
        """Significant bits of a sample of the first frame, 1 to 16: a processor's `bit_depth`."""
        return self._of_first().bit_depth

    @property
    def notes(self) -> Tuple[str, ...]:
        """What the file says of the first frame that its samples do not show, a line each.

        Such as an orientation, which is left out of account, as a mosaic must be taken as it was
        stored.
        """
        return self._of_first().notes

    def __len__(self) -> int:
        return int(self._reader().count)

    def __getitem__(self, index: Any) -> Frame:
        first, *others = index if isinstance(index, tuple) else (index,)
        if isinstance(first, slice):
            frames = self._stack(range(len(self))[first])
            chosen = (slice(None), *others)
        else:
            frames = self._read(self._place(first))[0]
            chosen = (*others,)
        part: Frame = frames[chosen] if others else frames
        return part

    def _place(self, index: Any) -> int:
        try:
            return range(len(self))[operator.index(index)]
        except IndexError:
            raise IndexError(f"there is no frame {index}; the file has {len(self)}") from None

    def __iter__(self) -> Iterator[Frame]:
        return (self._read(place)[0] for place in range(len(self)))

    def __array__(self, dtype: Any = None) -> npt.NDArray[Any]:
        """All frames, so that numpy takes a file for an array."""
        return self[:] if dtype is None else self[:].astype(dtype, copy=False)

    def close(self) -> None:
        """Closes the file; its frames cannot be read then."""
        self._opened = None

    def __enter__(self) -> FrameFile:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __reduce__(self) -> Tuple[Any, ...]:
        return FrameFile, (self._path, self._raw)

    def __repr__(self) -> str:
        state = "closed" if self._opened is None else f"frames={len(self)}"
        return f"FrameFile({self._path!r}, {state})"
