#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Every public name has its entry in the pages that scripts/docs built; 77 where it built none.

entries_test.py symbols PROJECT NM LIBRARY...    names that libraries export
entries_test.py headers PROJECT                  names in installed headers
entries_test.py python PROJECT                   names of the Python package
entries_test.py commands PROJECT TOOL            commands and options of the tool
"""

import ast
import html
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree
import zlib

# Modules whose names are public beside those of the package itself.
PYTHON_MODULES = ("pictures", "plot", "dask", "xarray", "testing")
DECLARATION = re.compile(
    r"^(?:template <.*>\n(?:requires .*\n)?)?"
    r"(?:(?:class|struct|enum class) (?P<type>\w+)[^;]*?\{"
    r"|(?:class|struct|enum class) \w+.*;"
    r"|using (?P<alias>\w+) ="
    r"|(?:inline )?constexpr [^()=]*?(?P<constant>k[A-Z]\w+)\b"
    r"|[a-zA-Z][\w:<>,&*\[\] ]*[ &*](?P<function>\w+)\()",
    re.MULTILINE,
)


def text_of(path):
    return re.sub(r"\s+", " ", html.unescape(re.sub(r"<[^>]*>", "", path.read_text(encoding="utf-8"))))


def cpp_entries(site):
    tags = xml.etree.ElementTree.parse(site / "cpp" / "names.xml")
    names = (name.text for name in tags.iter("name"))
    return {name.split("::")[-1] for name in names}


def symbols(project, nm, *libraries):
    site = project / "build" / "site"
    entries = cpp_entries(site) | set(re.findall(r"\w+", text_of(site / "reference" / "cpp.html")))
    for library in libraries:
        table = subprocess.run(
            [nm, "-D", "--defined-only", library], check=True, capture_output=True, text=True
        ).stdout
        names = [line.split()[-1] for line in table.splitlines() if " T " in line]
        yield from ((f"{name} of {library}", name in entries) for name in names)


def headers(project):
    suite = project / "polarization_processing_suite"
    entries = cpp_entries(project / "build" / "site")
    c_headers = [
        suite / "polarization_processor" / "kevrinth_qrm_polarization_processor.h",
        suite / "logger" / "kevrinth_qrm_logger.h",
    ]
    for header in c_headers:
        code = re.sub(r"/\*.*?\*/", "", header.read_text(encoding="utf-8"), flags=re.DOTALL)
        names = re.findall(r"\b(?:kv|qrm)_\w+(?= =|\()|(?<=typedef int32_t )\w+", code)
        yield from ((f"{name} of {header.name}", name in entries) for name in names)
    for header in [suite / "planes" / "plane_list.h", *suite.glob("toolkit/*/include/**/*.h")]:
        code = re.sub(r" *//.*", "", header.read_text(encoding="utf-8"))
        for match in DECLARATION.finditer(code):
            name = next(filter(None, match.groups()), None)
            if name and name != "operator":
                yield f"{name} of {header.name}", name in entries


def python(project):
    package = project / "polarization_processing_suite" / "python" / "kv_polarization"
    inventory = (project / "build" / "site" / "objects.inv").read_bytes()
    rows = zlib.decompress(inventory.split(b"zlib.\n", 1)[1]).decode().splitlines()
    entries = {row.split()[0] for row in rows}
    yield from ((name, name in entries) for name in public_names(package) if "__" not in name)
    homes = {entry.rsplit(".", 1)[-1] for entry in entries}
    for module in package.glob("*.py"):
        for node in ast.parse(module.read_text(encoding="utf-8")).body:
            if isinstance(node, ast.ClassDef) and node.name in homes and node.name[0] != "_":
                yield from members(node, f"kv_polarization.{module.stem}.{node.name}", entries)


def public_names(package):
    for module in ("", *PYTHON_MODULES):
        tree = ast.parse((package / f"{module or '__init__'}.py").read_text(encoding="utf-8"))
        lists = [
            ast.literal_eval(node.value)
            for node in tree.body
            if isinstance(node, (ast.Assign, ast.AugAssign)) and "__all__" in ast.dump(node)
        ]
        own = [node.name for node in tree.body if isinstance(node, (ast.FunctionDef, ast.ClassDef))]
        for name in sum(lists, []) or [name for name in own if name[0] != "_"]:
            if name != "pictures":  # a module; its names are told one by one
                yield ".".join(filter(None, ("kv_polarization", module, name)))


def members(node, path, entries):
    documentation = ast.get_docstring(node) or ""
    for member in node.body:
        if isinstance(member, ast.FunctionDef) and member.name[0] != "_" and member.name != "of":
            yield f"{path}.{member.name}", f"{path}.{member.name}" in entries
        if isinstance(member, ast.AnnAssign) and not re.match("_|[A-Z]+$", member.target.id):
            name = member.target.id
            yield f"{path}.{name}", f"{path}.{name}" in entries or f"`{name}`" in documentation


def commands(project, tool):
    page = (project / "build" / "site" / "kv-polarize.html").read_text(encoding="utf-8")
    told = subprocess.run([tool, "--help"], check=True, capture_output=True, text=True).stdout
    for command in re.findall(r"^  ([a-z]+)  ", told, re.MULTILINE):
        section = page.partition(f'<h2 id="kv-polarize-{command}">')[2].partition("<h2")[0]
        yield f"the command {command}", bool(section)
        heads = " ".join(re.findall(r"<li>\s*(?:<p>)?(.*?):", section))
        entries = set(re.findall(r"--[a-z][a-z0-9-]*", heads))
        told = subprocess.run([tool, command, "--help"], check=True, capture_output=True, text=True)
        options = re.findall(r"^ +(?:-\w, )?(--[a-z][a-z0-9-]*)", told.stdout, re.MULTILINE)
        yield from ((f"{option} of {command}", option in entries) for option in sorted(set(options)))


def main():
    kind, project, *arguments = sys.argv[1:]
    checks = {"symbols": symbols, "headers": headers, "python": python, "commands": commands}
    if not (pathlib.Path(project) / "build" / "site" / "index.html").exists():
        print(f"there are no pages in {project}/build/site")
        sys.exit(77)
    results = list(checks[kind](pathlib.Path(project), *arguments))
    missing = [name for name, found in results if not found]
    print(f"{len(results)} names, {len(missing)} without an entry", *missing, sep="\n")
    sys.exit(1 if missing or not results else 0)


main()
