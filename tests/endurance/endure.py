#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Runs the cases of endurance, and prints a line for each.

    endure.py [--build FOLDER] [--work FOLDER] [--quick] [--list] [CASE...]

Exit status: 0 all went well, 1 some case failed, 77 all were skipped.
"""

import argparse
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True

import allocations  # noqa: E402
import clock  # noqa: E402
import damaged  # noqa: E402
import disk  # noqa: E402
import kills  # noqa: E402
import programs  # noqa: E402
import workers  # noqa: E402
from setting import Failed, Setting, Skipped  # noqa: E402

CASES = {
    "transforms": (programs.transforms, "millions of transforms: memory, bytes"),
    "lifecycle": (programs.lifecycle, "modules and handles begun and ended"),
    "loading": (programs.loading, "the library loaded and unloaded"),
    "allocations": (allocations.run, "each allocation failing once, in toolkit and tool"),
    "kills": (kills.run, "a batch killed and resumed"),
    "workers": (workers.run, "workers of a cluster killed"),
    "disk": (disk.run, "full and read-only disks, folders that vanish"),
    "clock": (clock.run, "clocks that go back"),
    "damaged": (damaged.run, "thousands of frames, some of them damaged"),
}
ROOT = pathlib.Path(__file__).resolve().parents[2]


def main() -> int:
    parser = argparse.ArgumentParser(description="Runs the cases of endurance.")
    parser.add_argument("cases", nargs="*", metavar="CASE", help="all by default")
    parser.add_argument("--quick", action="store_true", help="seconds a case, as the tests do")
    parser.add_argument("--list", action="store_true", help="list the cases")
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/release")
    parser.add_argument("--work", help="the folder of working files; /dev/shm where there is one")
    options = parser.parse_args()
    unknown = [case for case in options.cases if case not in CASES]
    if unknown:
        parser.error(f"there is no case {unknown[0]}; known are {', '.join(CASES)}")
    if options.list:
        for name, (_, what) in CASES.items():
            print(f"{name:12} {what}")
        return 0
    memory = "/dev/shm"  # flushing each file to a real disk would be most of the time
    place = options.work or (memory if pathlib.Path(memory).is_dir() else None)
    results = [
        run_case(name, options.build.resolve(), place, options.quick)
        for name in options.cases or CASES
    ]
    return 1 if "FAILED" in results else 77 if set(results) == {"skipped"} else 0


def run_case(name: str, build: pathlib.Path, place: str | None, quick: bool) -> str:
    work = pathlib.Path(tempfile.mkdtemp(prefix=f"kv-endure-{name}-", dir=place))
    start = time.monotonic()
    try:
        figures, result = CASES[name][0](Setting(build, work, quick)), "ok"
    except Skipped as reason:
        figures, result = str(reason), "skipped"
    except (Failed, subprocess.TimeoutExpired) as failure:
        figures, result = str(failure), "FAILED"
    finally:
        shutil.rmtree(work, ignore_errors=True)
    print(f"{name}: {figures}; {time.monotonic() - start:.0f} s: {result}", flush=True)
    return result


if __name__ == "__main__":
    sys.exit(main())
