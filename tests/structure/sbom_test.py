# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""scripts/sbom writes what SPDX 2.3 asks for, and finds what is known to be in the build.

sbom_test.py SOURCE_FOLDER BUILD_TREE VERSION
"""

import collections
import hashlib
import json
import pathlib
import re
import shutil
import subprocess
import sys

SOURCE, BUILD, VERSION = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]

NEEDED = {
    "packages": "SPDXID name versionInfo downloadLocation licenseConcluded licenseDeclared"
                " copyrightText",
    "files": "SPDXID fileName checksums licenseConcluded licenseInfoInFiles copyrightText",
    "relationships": "spdxElementId relationshipType relatedSpdxElement",
}
TOP = "spdxVersion dataLicense SPDXID name documentNamespace creationInfo"

# From the sources: what each part is compiled with and linked to.
EXPECTED = """
kv-polarize DYNAMIC_LINK kevrinth_qrm_polarization_processor
kv-polarize STATIC_LINK kv_polarization-toolkit
kv-polarize DYNAMIC_LINK tiff
kv-polarize DYNAMIC_LINK libdeflate
kv-polarize DEPENDS_ON cli11
kv-polarize DEPENDS_ON xxhash
kv_polarization-toolkit DEPENDS_ON eigen3
kv_polarization-toolkit DEPENDS_ON nlohmann-json3
kv_polarization-python DEPENDS_ON pybind11
kevrinth_qrm_logger DYNAMIC_LINK spdlog
kevrinth_qrm_logger DEPENDS_ON fmtlib
kevrinth_qrm_polarization_processor DYNAMIC_LINK glibc
kevrinth_qrm_polarization_processor CONTAINS ./include/kevrinth_qrm_polarization_processor.h
kevrinth_qrm_logger CONTAINS ./lib/kevrinth_qrm_logger.so
cmake BUILD_TOOL_OF kevrinth_qrm_polarization_processor
"""


def faults_of(told):
    for key in TOP.split():
        if not told.get(key):
            yield f"no {key}"
    if told["spdxVersion"] != "SPDX-2.3" or told["dataLicense"] != "CC0-1.0":
        yield "another version or licence of the document"
    if not re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", told["creationInfo"]["created"]):
        yield "a time of another form"
    for group, keys in NEEDED.items():
        yield from (f"{group}: no {key} in {record}" for record in told[group]
                    for key in keys.split() if not record.get(key))  # fmt: skip

    names = {record["SPDXID"]: record.get("name") or record["fileName"]
             for record in told["packages"] + told["files"]}  # fmt: skip
    if len(names) != len(told["packages"]) + len(told["files"]):
        yield "one identifier of two elements"
    yield from (f"{name} is no identifier" for name in names
                if not re.fullmatch(r"SPDXRef-[A-Za-z0-9.-]+", name))  # fmt: skip
    names["SPDXRef-DOCUMENT"] = "document"

    links, holders = set(), collections.Counter()
    for link in told["relationships"]:
        ends = [names.get(link["spdxElementId"]), names.get(link["relatedSpdxElement"])]
        if None in ends:
            yield f"a relationship of nothing: {link}"
        else:
            links.add(f"{ends[0]} {link['relationshipType']} {ends[1]}")
            holders[ends[1]] += link["relationshipType"] == "CONTAINS"
    yield from (f"missing: {link}" for link in EXPECTED.strip().splitlines() if link not in links)
    yield from (f"{file['fileName']} is in {holders[file['fileName']]} packages"
                for file in told["files"] if holders[file["fileName"]] != 1)  # fmt: skip

    taken_in = ("DYNAMIC_LINK", "DEPENDS_ON")
    inside = {link.split()[2] for link in links if link.split()[1] in taken_in}
    for package in told["packages"]:
        if package["name"] in inside and package["licenseDeclared"] == "NOASSERTION":
            yield f"no licence of {package['name']}: give scripts/sbom one"
        if package.get("supplier", "").endswith("authors") and package["versionInfo"] != VERSION:
            yield f"{package['name']} is of version {package['versionInfo']}"


def sums_of(told, name):
    file = next(file for file in told["files"] if file["fileName"].endswith(f"/{name}"))
    return {entry["algorithm"]: entry["checksumValue"] for entry in file["checksums"]}


def main():
    if not all(map(shutil.which, ("dpkg-query", "ninja", "git"))):
        print("needs dpkg-query, ninja and git")
        return 77
    script = [SOURCE / "scripts/sbom", "--build", BUILD]
    told = json.loads(subprocess.run(script, capture_output=True, text=True, check=True).stdout)
    faults = list(faults_of(told))
    content = (BUILD / "kevrinth_qrm_logger.so").read_bytes()
    for name, algorithm in (("SHA1", hashlib.sha1), ("SHA256", hashlib.sha256)):
        if sums_of(told, "lib/kevrinth_qrm_logger.so").get(name) != algorithm(content).hexdigest():
            faults.append(f"another {name} of the logger")
    print("\n".join(faults))
    return bool(faults)


sys.exit(main())
