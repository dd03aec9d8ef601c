# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""The project's version stands in CMakeLists.txt, and everything else takes it from there.

version_test.py SOURCE_FOLDER VERSION
"""

import pathlib
import re
import sys

# The number of the project, and what may write it by hand.
HOLDERS = {"CMakeLists.txt", "CHANGELOG.md"}
# Users ask for the minor version that their program was written for.
REQUEST = re.compile(r"find_package\((?:kv_polarization|\$\{library\}|kevrinth\w+) ([\d.]+)")
SKIPPED = {".git", "build", "__pycache__", "golden"}


def texts(source):
    for path in sorted(source.rglob("*")):
        name = path.relative_to(source)
        if path.is_file() and not SKIPPED & set(name.parts) and path.stat().st_size < 1 << 20:
            try:
                yield name.as_posix(), path.read_text(encoding="utf-8")
            except UnicodeDecodeError:
                continue  # a picture or another file of bytes


def main():
    source, version = pathlib.Path(sys.argv[1]), sys.argv[2]
    minor = version.rsplit(".", 1)[0]
    written = re.compile(rf"(?<![\w.]){re.escape(version)}(?![\w.])")
    faults = []
    for name, text in texts(source):
        for number, line in enumerate(text.splitlines(), 1):
            if name not in HOLDERS and written.search(line):
                faults.append(f"{name}:{number}: a version by hand: {line.strip()}")
            for asked in REQUEST.findall(line):
                if asked != minor:
                    faults.append(f"{name}:{number}: asks for {asked}, not for {minor}")

    project = (source / "CMakeLists.txt").read_text()
    if len(re.findall(rf"\bVERSION {re.escape(version)}\b", project)) != 1:
        faults.append(f"CMakeLists.txt does not tell {version} once")
    headings = re.findall(r"^## \[(.+?)\]", (source / "CHANGELOG.md").read_text(), re.MULTILINE)
    released = [heading for heading in headings if heading != "Unreleased"]
    if not headings or (released and released[0] != version):
        faults.append(f"CHANGELOG.md: the newest version is {released[:1]}, not {version}")

    print("\n".join(faults))
    return bool(faults)


sys.exit(main())
