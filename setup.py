# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Builds the Python package: its modules, and by CMake the extension module and the libraries.

KV_BUILD_TREE in the environment names a build tree of this project to take these from, configured
with KV_BUILD_PYTHON=ON; without it they are built anew, with CMake and a compiler for C++20.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build import build
from setuptools.command.build_ext import build_ext

ROOT = pathlib.Path(__file__).resolve().parent
PACKAGE = "polarization_processing_suite/python/kv_polarization"


class CleanBuild(build):
    """Without what an earlier build left, which the wheel would take in."""

    def run(self):
        shutil.rmtree(self.build_lib, ignore_errors=True)
        super().run()


class CMakeBuild(build_ext):
    """The extension is a component of the CMake project."""

    def run(self):
        tree = os.environ.get("KV_BUILD_TREE")
        if tree is None:
            tree = pathlib.Path(self.build_temp).resolve()
            generator = ["-G", "Ninja"] if shutil.which("ninja") else []
            self.cmake(
                *("-S", ROOT, "-B", tree, *generator, "-DCMAKE_BUILD_TYPE=Release"),
                *("-DCMAKE_CXX_FLAGS_RELEASE=-O2", "-DKV_BUILD_PYTHON=ON"),
                *("-DKV_BUILD_TOOLS=OFF", "-DKV_BUILD_TESTS=OFF", "-DKV_BUILD_BENCHMARKS=OFF"),
                f"-DPython_EXECUTABLE={sys.executable}",
            )
        jobs = len(os.sched_getaffinity(0))
        self.cmake("--build", tree, "--target", "kv_python", "--parallel", jobs)
        target = pathlib.Path(self.build_lib).resolve()
        self.cmake("--install", tree, "--component", "python", "--prefix", target)

    @staticmethod
    def cmake(*arguments):
        subprocess.run(["cmake", *map(str, arguments)], check=True)


def version():
    """The project's, which CMakeLists.txt tells."""
    return re.search(r"\bVERSION (\d+\.\d+\.\d+)", (ROOT / "CMakeLists.txt").read_text())[1]


# What setuptools notes goes into the folder of builds.
(ROOT / "build").mkdir(exist_ok=True)

setup(
    version=version(),
    packages=["kv_polarization"],
    package_dir={"kv_polarization": PACKAGE},
    package_data={"kv_polarization": ["py.typed", "*.pyi"]},
    ext_modules=[Extension("kv_polarization._core", sources=[])],
    cmdclass={"build": CleanBuild, "build_ext": CMakeBuild},
    options={"egg_info": {"egg_base": "build"}, "build": {"build_base": "build/wheel"}},
    zip_safe=False,
)
