# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Runs every example of a page of the documentation, in the order of the page.

    examples_test.py PAGE --prefix PREFIX --libdir LIBDIR --work FOLDER
                     [--python PYTHON] [--inputs SCRIPT] [--cc CC] [--cxx CXX]

A page begins in an empty folder; a script of inputs makes the files that it takes for granted. What
becomes of a block is told by its language:

- sh, bash, and indented blocks that call kv-polarize or a compiler: run, each by a bash of its own.
- c, cpp: whole programs, kept under the name that a comment in their first line tells, else
  example.c or example.cpp. Compiled without warnings and run, unless a shell block of the page runs
  them as ./NAME, and so builds them, too.
- python: run; what the blocks before have defined is there.
- cmake: configured; one with a project() is kept as CMakeLists.txt for the page's own commands.
- text: not run. Behind <!-- prints --> its lines are what the block before has printed.
- csv, ini: kept under the name that the comment in their first line tells.
- A block behind <!-- not run: REASON --> is left out, and all blocks of a page that has the comment
  <!-- no example is run: REASON -->.

Any other block fails the test: nobody would run it.
"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
from typing import Dict, List, NamedTuple, Optional

SHELL = ("sh", "bash")
KEPT = ("csv", "ini")
SESSION = pathlib.Path(__file__).with_name("python_session.py")
NAME = re.compile(r"^(?://|/\*|#) *([\w.-]+\.\w+)\b")
CALL = re.compile(r"(^|\s)(kv-polarize|cc|c\+\+) ", re.MULTILINE)


class Block(NamedTuple):
    language: str
    text: str
    line: int  # of the page, of the first line of the text
    mark: str  # the comment in front of it


class Failure(Exception):
    pass


def blocks_of(page: str) -> List[Block]:
    blocks: List[Block] = []
    lines = page.splitlines()
    mark = ""
    number = 0
    while number < len(lines):
        line = lines[number]
        fence = re.match(r"^(\s*)(```+)(\w*)", line)
        begin = number + 1
        if fence:
            number = next(
                (end for end in range(begin, len(lines)) if lines[end].strip() == fence[2]), -1
            )
            if number < 0:
                raise Failure(f"line {begin}: the block has no end")
            text = "\n".join(text[len(fence[1]) :] for text in lines[begin:number])
            blocks.append(Block(fence[3], text, begin + 1, mark))
            mark = ""
        elif line.startswith("    ") and (number == 0 or not lines[number - 1].strip()):
            while number + 1 < len(lines) and re.match(r"^(    |\s*$)", lines[number + 1]):
                number += 1
            text = "\n".join(text[4:] for text in lines[begin - 1 : number + 1])
            blocks.append(Block("sh" if CALL.search(text) else "text", text, begin, mark))
            mark = ""
        elif line.startswith("<!--"):
            mark = line[4:].split("-->")[0].strip()
        elif line.strip():
            mark = ""
        number += 1
    return blocks


class Page:
    def __init__(self, options: argparse.Namespace) -> None:
        self.work: pathlib.Path = options.work
        self.compilers: Dict[str, List[str]] = {
            "c": [options.cc, "-std=c11"], "cpp": [options.cxx, "-std=c++20"]
        }  # fmt: skip
        self.python = options.python
        self.session: Optional[subprocess.Popen[str]] = None
        self.blocks = blocks_of(options.page.read_text())
        self.printed = ""
        self.folder = self.work / "page"
        tools = self.work / "bin"
        shutil.rmtree(self.work, ignore_errors=True)
        self.folder.mkdir(parents=True)
        tools.mkdir()
        if self.python:
            (tools / "python3").write_text(f'#!/bin/sh\nexec "{self.python}" "$@"\n')
            (tools / "python3").chmod(0o755)
        self.environment = {
            **os.environ,
            "PATH": f"{tools}:{options.prefix}/bin:{os.environ['PATH']}",
            "LD_LIBRARY_PATH": str(options.libdir),
            "PKG_CONFIG_PATH": f"{options.libdir}/pkgconfig",
            "CMAKE_PREFIX_PATH": str(options.prefix),
            "PYTHONDONTWRITEBYTECODE": "1",
            "MPLBACKEND": "agg",
            "LC_ALL": "C.UTF-8",
        }
        if options.inputs:
            self.environment["PATH"] = f"{self.work}/inputs:{self.environment['PATH']}"
            self.run(["bash", "-eu", str(options.inputs)])

    def run(self, command: List[str]) -> None:
        done = subprocess.run(
            command, cwd=self.folder, env=self.environment, text=True, errors="replace",
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        )  # fmt: skip
        self.printed = done.stdout
        print(done.stdout, end="")
        if done.returncode != 0:
            raise Failure(f"it ends with status {done.returncode}")

    def flags(self, *packages: str) -> List[str]:
        said = subprocess.run(
            ["pkg-config", "--cflags", "--libs", *packages],
            env=self.environment, text=True, stdout=subprocess.PIPE, check=True,
        )  # fmt: skip
        return said.stdout.split()

    def take(self, block: Block) -> None:
        if block.language in SHELL:
            self.run(["bash", "-euo", "pipefail", "-c", block.text])
        elif block.language in self.compilers:
            self.compile(block)
        elif block.language == "python":
            self.interpret(block)
        elif block.language == "cmake":
            self.configure(block)
        elif block.language == "text":
            self.compare(block)
        elif block.language in KEPT:
            name = NAME.match(block.text)
            if not name:
                raise Failure("its first line tells no name")
            (self.folder / name[1]).write_text(block.text + "\n")
        else:
            raise Failure(f'no example is of the language "{block.language}"')

    def compile(self, block: Block) -> None:
        name = NAME.match(block.text)
        source = self.folder / (name[1] if name else f"example.{block.language}")
        source.write_text(block.text + "\n")
        if not re.search(r"\bint main\(", block.text):
            raise Failure("it is no whole program")
        if any(re.search(rf"\./{source.stem}\b", other.text) for other in self.blocks
               if other.language in SHELL):  # fmt: skip
            return
        packages = ["kv-image-files", "kv-pictures", "kv-calibration"]
        if block.language == "c":
            packages = ["kevrinth_qrm_polarization_processor"]
        program = self.work / source.stem
        warnings = ["-Wall", "-Wextra", "-Werror"]
        self.run([*self.compilers[block.language], *warnings, str(source), "-o", str(program),
                  *self.flags(*packages)])  # fmt: skip
        self.run([str(program)])

    def interpret(self, block: Block) -> None:
        if not self.python:
            print("left out: there is no Python package")
            return
        # Lines of the program are those of the page.
        program = self.work / f"line{block.line}.py"
        program.write_text("\n" * (block.line - 1) + block.text + "\n")
        if self.session is None:
            self.session = subprocess.Popen(
                [self.python, str(SESSION)], cwd=self.folder, env=self.environment, text=True,
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            )  # fmt: skip
        assert self.session.stdin and self.session.stdout
        self.session.stdin.write(f"{program}\n")
        self.session.stdin.flush()
        self.printed = ""
        for line in self.session.stdout:
            if line == "END\n":
                return
            print(line, end="")
            self.printed += line
        raise Failure(f"it ends with status {self.session.wait()}")

    def end(self) -> None:
        if self.session is not None:
            self.session.communicate()
            if self.session.returncode != 0:
                raise Failure(f"Python ends with status {self.session.returncode}")

    def configure(self, block: Block) -> None:
        if re.search(r"\bproject\(", block.text):
            (self.folder / "CMakeLists.txt").write_text(block.text + "\n")
            return
        target = re.search(r"target_link_libraries\((\w+)", block.text)
        if not target:
            raise Failure("it links nothing")
        project = self.work / f"cmake{block.line}"
        project.mkdir()
        (project / "main.cpp").write_text("int main() {}\n")
        (project / "CMakeLists.txt").write_text(
            "cmake_minimum_required(VERSION 3.22)\nproject(example)\n"
            f"add_executable({target[1]} main.cpp)\n{block.text}\n"
        )
        self.run(["cmake", "-S", str(project), "-B", str(project / "build")])

    def compare(self, block: Block) -> None:
        if block.mark != "prints":
            return
        printed = [" ".join(line.split()) for line in self.printed.splitlines()]
        for line in block.text.splitlines():
            if line.strip() not in ("", "...") and " ".join(line.split()) not in printed:
                raise Failure(f"nobody has printed this line: {line}")


def main() -> int:
    parser = argparse.ArgumentParser()
    parser.add_argument("page", type=pathlib.Path)
    parser.add_argument("--prefix", type=pathlib.Path, required=True)
    parser.add_argument("--libdir", type=pathlib.Path, required=True)
    parser.add_argument("--work", type=pathlib.Path, required=True)
    parser.add_argument("--inputs", type=pathlib.Path)
    parser.add_argument("--python")
    parser.add_argument("--cc", default="cc")
    parser.add_argument("--cxx", default="c++")
    options = parser.parse_args()
    if re.search(r"^<!-- no example is run: \S", options.page.read_text(), re.MULTILINE):
        return 0
    line = 0
    try:
        page = Page(options)
        for block in page.blocks:
            line = block.line
            if not block.mark.startswith("not run: "):
                print(f"--- {options.page.name}:{line}: {block.language}", flush=True)
                page.take(block)
        page.end()
    except Failure as failure:
        print(f"{options.page}:{line}: {failure}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
