# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Image files: planes, maps, pictures, and stacks of them.

PNG, TIFF (where the build has it), PGM and PPM, NPY, and headerless frames in the pixel formats of
cameras. What a file holds decides on its format when it is read, its name's ending when it is
written: `.png`, `.tiff` or `.tif`, `.pgm` or `.pnm`, `.npy`, `.raw`.
"""

from __future__ import annotations

import operator
from typing import Any, Optional, Union

import numpy as np
import numpy.typing as npt

from kv_polarization import _core
from kv_polarization._paths import Path, named_errors, plain
from kv_polarization.frame_file import RawShape, open_frames

Image = npt.NDArray[Union[np.uint8, np.uint16, np.float32]]


def read(path: Path, *, raw: Optional[RawShape] = None) -> npt.NDArray[Any]:
    """All images of a file as one array of uint8, uint16 or float32, as they are stored.

    The array is (rows, columns) for one grey image, and (images, rows, columns) for several; images
    of several channels have these as a last axis. With `raw` the file is taken as headerless
    frames, whatever it holds.

    NPY files hold (rows, columns), (images, rows, columns) or (images, rows, columns, channels).
    Three axes are (rows, columns, channels) where the last one is 3 for uint8, or 2 to 4 for
    float32.

    Errors: FileNotFoundError, PermissionError and IsADirectoryError; OSError for files that are
    damaged, truncated or of no known format; ValueError for images of different sizes or types,
    which `open_frames` gives one by one.
    """
    if raw is not None:
        with open_frames(path, raw=raw) as frames:
            return frames[0] if len(frames) == 1 else frames[:]
    name = plain(path)
    with named_errors(name):
        images: npt.NDArray[Any] = _core.read(name)
    return images


def write(
    path: Path,
    image: Image,
    *,
    bit_depth: Optional[int] = None,
    title: str = "",
    provenance: str = "",
    compression: Optional[str] = None,
) -> None:
    """Writes an array of uint8, uint16 or float32 in the format of the file's ending.

    `image` is one of these:

    - (rows, columns): a grey image, of any of these types;
    - (rows, columns, 3) of uint8: a picture in red, green and blue;
    - (rows, columns, 2 to 4) of float32: a plane of several channels;
    - (images, rows, columns), any other three axes: a stack of grey images;
    - (images, rows, columns, channels) of float32.

    Stacks go into TIFF, where they are pages, NPY, PGM and headerless files; floats into TIFF, NPY
    and headerless files.

    `bit_depth` is that of counts, 1 to 16, all of the elements' where None. TIFF and PGM keep it;
    up to 8 bits are stored in bytes. `title` and `provenance`, one line that tells what made the
    image, are kept by PNG, TIFF and PGM; for other formats the provenance goes to a file beside,
    `PATH.json`. `compression`, of PNG and TIFF, is `"none"`, `"fast"` or `"small"`; `"fast"` PNG
    and plain TIFF where None. None of them loses anything.

    The file is written beside its place, and put there when it is complete: an earlier one is
    replaced then, and stays when that fails.

    Errors: TypeError for other arrays; ValueError for shapes, bit depths and endings that cannot be
    written, and for samples above the bit depth; FileNotFoundError where the folder is missing, and
    other OSErrors.
    """
    name = plain(path)
    depth = None if bit_depth is None else operator.index(bit_depth)
    with named_errors(name, writes=True):
        _core.write(
            name,
            image,
            bit_depth=depth,
            title=title,
            provenance=provenance,
            compression=compression,
        )


def provenance_of(path: Path) -> Optional[str]:
    """What made a file, as `write` kept it; None where nothing tells, and for missing files."""
    text: Optional[str] = _core.provenance(plain(path))
    return text
