# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""The package's types: consistent in themselves, and those of the extension module true."""

import ast
import pathlib
import re
import subprocess
import sys

from kv_polarization import _core

ROOT = pathlib.Path(__file__).parents[2]
PACKAGE = ROOT / "polarization_processing_suite" / "python"

# pybind11's classes are of a metaclass of its own, and take *args where they have no constructor.
PECULIAR = r"kv_polarization\._core\.(Calibration|F\w+|Pictures|Processor)(\.__init__)?"


def run(*command, cwd):
    done = subprocess.run(
        [sys.executable, "-m", *map(str, command)], cwd=cwd, capture_output=True, text=True
    )
    assert done.returncode == 0, done.stdout + done.stderr


def test_the_package_keeps_to_its_types(tmp_path):
    run("mypy", "--config-file", ROOT / "pyproject.toml", "--cache-dir", tmp_path, cwd=PACKAGE)


def test_the_stub_has_what_the_module_has(tmp_path):
    allowed = tmp_path / "allowed"
    allowed.write_text(PECULIAR)
    run("mypy.stubtest", "kv_polarization._core", "--allowlist", allowed, cwd=tmp_path)


def parameters_of_the_stub():
    tree = ast.parse((PACKAGE / "kv_polarization" / "_core.pyi").read_text())
    for owner in [tree, *(node for node in tree.body if isinstance(node, ast.ClassDef))]:
        for function in owner.body:
            if isinstance(function, ast.FunctionDef) and not function.decorator_list:
                arguments = function.args.args + function.args.kwonlyargs
                yield getattr(owner, "name", None), function.name, [a.arg for a in arguments]


def test_the_stubs_parameters_are_those_of_the_module():
    checked = 0
    for owner, name, parameters in parameters_of_the_stub():
        function = getattr(getattr(_core, owner) if owner else _core, name)
        said = re.match(r"\w+\((.*)\) -> ", function.__doc__)[1]
        names = re.findall(r"(?:^|, )(\w+)(?=: )", re.sub(r"\[.*?\]+", "", said))
        assert names == parameters, (owner, name)
        checked += 1
    assert checked > 15
