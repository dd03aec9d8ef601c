# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""What the cases share: the tool, folders of frames and results, and what is expected of them."""

import dataclasses
import os
import pathlib
import re
import shutil
import subprocess

Files = dict[str, bytes]
JOURNAL = "kv-polarize.journal"
PARTIAL = re.compile(r"\.[0-9]{10}\.partial$")


class Failed(Exception):
    """Something went wrong that must not."""


class Skipped(Exception):
    """The machine lacks what the case needs."""


def expect(good: bool, what: str) -> None:
    if not good:
        raise Failed(what)


@dataclasses.dataclass(frozen=True)
class Setting:
    build: pathlib.Path
    work: pathlib.Path  # empty at first, removed at the end
    quick: bool

    @property
    def tool(self) -> str:
        return str(self.build / "kv-polarize")

    def program(self, name: str) -> str:
        return str(self.build / "tests/endurance" / name)

    def environment(self, **more: str) -> dict[str, str]:
        return {**os.environ, "LC_ALL": "C", **more}

    def run(self, *words: str, **more: str) -> subprocess.CompletedProcess[str]:
        """The tool in the working folder, with more environment."""
        return subprocess.run(
            [self.tool, *words], cwd=self.work, env=self.environment(**more), text=True,
            stdin=subprocess.DEVNULL, capture_output=True, timeout=120, check=False,
        )  # fmt: skip

    def made(self, *words: str) -> None:
        """Runs the tool, which has to succeed."""
        done = self.run(*words)
        expect(done.returncode == 0, f"kv-polarize {' '.join(words)}: {done.stderr}")

    def night(self, frames: int, width: int = 64, height: int = 48) -> None:
        """Makes night/ of single frames and a stack of five."""
        size = ("--width", str(width), "--height", str(height), "--bit-depth", "12")
        self.made("simulate", "--frames", str(frames), "--sensor", "1", *size, "-o", "night")
        pages = self.work / "pages"
        self.made("simulate", "--frames", "5", "--sensor", "2", *size, "--format", "raw", "-o", "pages")
        with open(self.work / "night" / "stack.npy", "wb") as stack:
            header = f"{{'descr': '<u2', 'fortran_order': False, 'shape': (5, {height}, {width}), }}"
            stack.write(b"\x93NUMPY\x01\x00" + (118).to_bytes(2, "little"))
            stack.write(header.ljust(117).encode() + b"\n")
            for page in sorted(pages.glob("*.raw")):
                stack.write(page.read_bytes())
        shutil.rmtree(pages)


def files_in(folder: pathlib.Path) -> Files:
    """All files by their names within the folder."""
    return {
        str(path.relative_to(folder)): path.read_bytes()
        for path in sorted(folder.rglob("*"))
        if path.is_file()
    }


def expect_whole(folder: pathlib.Path, whole: Files, what: str, partials: bool = False) -> None:
    """Every file under a final name has the content of that name; partial ones only after a kill."""
    for name, content in files_in(folder).items() if folder.exists() else ():
        if PARTIAL.search(name):
            expect(partials, f"{what}: {name} is left")
        elif not name.endswith(JOURNAL):
            expect(whole.get(name) == content, f"{what}: {name} is not as it should be")


def differing(files: Files, whole: Files) -> list[str]:
    """Names of files that differ or are lacking; lines of journals may come in any order."""
    return sorted(
        name
        for name in files.keys() | whole.keys()
        if files.get(name) != whole.get(name)
        and not (
            name.endswith(JOURNAL)
            and sorted(files.get(name, b"").splitlines()) == sorted(whole.get(name, b"").splitlines())
        )
    )


def same_files(files: Files, whole: Files) -> bool:
    return not differing(files, whole)


def expect_same(folder: pathlib.Path, whole: Files, what: str) -> None:
    """The files of an undisturbed run and nothing else."""
    names = differing(files_in(folder), whole)
    expect(not names, f"{what}: these differ from an undisturbed run: {names[:3]}")
