#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Holds the include lines of the suite to the tables in layers.ini.

    layers_test.py SUITE
"""

import configparser
import graphlib
import pathlib
import re
import sys

INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')
SYSTEM = re.compile(r"\s*#\s*(?:el)?if.*\b(_WIN\d\d|__MINGW\w+|__(?:linux|unix|APPLE)__)\b")


def read_table(config, section):
    return {key: value.split() for key, value in config[section].items()}


def check_circles(arrows):
    folders = {
        folder: [word for word in words if word in arrows] for folder, words in arrows.items()
    }
    try:
        graphlib.TopologicalSorter(folders).prepare()
    except graphlib.CycleError as error:
        yield "layers.ini: a circle: " + " <- ".join(error.args[1])


def folder_of(file):
    """The folder of a file in the suite; installed headers are of the folder that has include/."""
    path = pathlib.PurePath(file)
    parts = path.parts
    return "/".join(parts[: parts.index("include")]) if "include" in parts else str(path.parent)


def target_of(suite, quote, name):
    """The word of the table that allows an include; None for the C++ standard library."""
    if (suite / name).is_file():
        return folder_of(name)
    if installed := sorted(suite.glob(f"toolkit/*/include/{name}")):
        return folder_of(installed[0].relative_to(suite))
    if quote == '"':
        return name
    if "/" in name:
        return f"<{name.split('/')[0]}>"
    return f"<{name}>" if "." in name else None


def check_file(suite, path, arrows, systems):
    file = path.relative_to(suite)
    folder = folder_of(file)
    if folder not in arrows:
        yield f"{file}: layers.ini does not know the folder"
        return
    for number, line in enumerate(path.read_text().splitlines(), 1):
        if include := INCLUDE.match(line):
            target = target_of(suite, *include.groups())
            if target not in (None, folder, *arrows[folder]):
                yield f"{file}:{number}: {folder} must not know {target}"
        if system := SYSTEM.match(line):
            if file.parts[0] != "platform" and str(file) not in systems.get(system[1], ()):
                yield f"{file}:{number}: {system[1]} is asked for outside platform"


def main():
    suite = pathlib.Path(sys.argv[1])
    config = configparser.ConfigParser()
    config.optionxform = str
    config.read(pathlib.Path(__file__).with_name("layers.ini"))
    arrows, systems = read_table(config, "includes"), read_table(config, "systems")

    sources = [path for path in sorted(suite.rglob("*")) if path.suffix in (".c", ".cpp", ".h")]
    faults = list(check_circles(arrows))
    for path in sources:
        faults += check_file(suite, path, arrows, systems)
    print(*faults, sep="\n")
    return bool(faults) or not sources


if __name__ == "__main__":
    sys.exit(main())
