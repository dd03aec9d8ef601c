# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Paths as the core takes them, and its faults as Python's own errors."""

from __future__ import annotations

import contextlib
import errno
import os
from typing import Iterator, Union

Path = Union[str, "os.PathLike[str]"]


def plain(path: Path) -> str:
    """As text, in which bytes that are no text stay what they are."""
    text = os.fsdecode(path)
    if "\0" in text:
        raise ValueError("a path holds a zero character, which no file's name has")
    return text


@contextlib.contextmanager
def named_errors(path: str, writes: bool = False) -> Iterator[None]:
    """Names the file in errors, which the core leaves to its callers.

    Raises the OSError that Python itself would, such as FileNotFoundError. What no file can hold
    is a ValueError, what this file holds an OSError.
    """
    try:
        yield
    except NotImplementedError as error:
        line = f"{path}: {error}"
        raise (ValueError(line) if writes else OSError(line)) from None
    except ValueError as error:
        raise ValueError(f"{path}: {error}") from None
    except OSError as error:
        line = str(error).removeprefix(f"cannot write {path}: ")
        number = _reason(path, writes)
        raise OSError(number, line, path) if number else OSError(f"{path}: {line}") from None


def _reason(path: str, writes: bool) -> int:
    """The number of a usual error, 0 for all others."""
    place = (os.path.dirname(path) or ".") if writes else path
    if not os.path.exists(place):
        return errno.ENOENT
    if os.path.isdir(path):
        return errno.EISDIR
    if writes and not os.path.isdir(place):
        return errno.ENOTDIR
    return 0 if os.access(place, os.W_OK if writes else os.R_OK) else errno.EACCES
