#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Frames a second of kv-polarize transform, from files to files on a RAM disk.

    benchmarks/throughput.py [--readme]

Makes frames of 2448 x 2048 pixels with 12 bits, transforms them in five ways, and prints a Markdown
table: frames a second and processor time a frame (user and system, of all threads), beside their
aims and beside what the parts would take. With --readme the table goes into README.md.

The ideal is arithmetic. Each part is measured by itself on one core, in the same run, in
milliseconds of the processor:

    read       a file of one frame, 10 MB, by plain reads into memory that is used again
    write      a new file of 10 MB, by plain writes
    transform  to the planes, by kv-polarize bench on one thread
    encode,    PNG of a frame, by file_benchmarks, whose frame is as large and as noisy; with
    decode     writing and reading of its file

The sum for a frame is one read or decode, one transform, and one write or encode for each plane. An
uncompressed TIFF counts as its bytes. Ideal frames a second are the cores by that sum: all cores
busy, none waiting for memory or for another. Pictures have no part measured by itself, and so their
run has no ideal.
"""

import argparse
import datetime
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

HERE = Path(__file__).resolve().parent
PROGRAMS = HERE.parent / "build/release"
BEGIN = "<!-- throughput: made by throughput.py -->"
END = "<!-- end of throughput -->"

WIDTH, HEIGHT = 2448, 2048
FRAME_BYTES = WIDTH * HEIGHT * 2
DIFFERENT_FRAMES = 4  # the others are copies, as simulating takes longer than all else
BYTES_A_FRAME = 10 * FRAME_BYTES  # of inputs and results together, at the most

LINEAR_ANGLE_DOLP = "intensity,azimuth,dolp"
FIVE_PLANES = "intensity,stokes_s1,stokes_s2,azimuth,dolp"
RAW_SHAPE = ["--width", str(WIDTH), "--height", str(HEIGHT), "--raw-format", "Mono12"]


@dataclass
class Run:
    title: str
    ending: str  # of the inputs
    planes: str  # empty for those of the tool's own choice, with pictures
    format: str  # of the results
    aim_rate: float  # frames a second
    aim_cpu: float | None  # milliseconds a frame

    def arguments(self):
        shape = {"raw": RAW_SHAPE, "png": ["--bit-depth", "12"]}.get(self.ending, [])
        if not self.planes:
            return shape
        return [*shape, "--planes", self.planes, "--format", self.format, "--no-pictures"]


RUNS = [
    Run("raw to TIFF: intensity, azimuth, DoLP", "raw", LINEAR_ANGLE_DOLP, "tiff", 75, 25),
    Run("TIFF to TIFF: five 16-bit planes", "tiff", FIVE_PLANES, "tiff", 50, 40),
    Run("TIFF to PNG: intensity, azimuth, DoLP", "tiff", LINEAR_ANGLE_DOLP, "png", 28, 65),
    Run("PNG to PNG: intensity, azimuth, DoLP", "png", LINEAR_ANGLE_DOLP, "png", 18, 95),
    Run("PNG with the usual planes and pictures", "png", "", "", 4, None),
]


def fail(line):
    sys.exit(f"throughput.py: {line}")


def quietly(command, **settings):
    """Runs a program to its end; returns what it printed."""
    result = subprocess.run(command, capture_output=True, text=True, **settings)
    if result.returncode != 0:
        fail(f"{' '.join(map(str, command))} failed: {result.stderr.strip()}")
    return result.stdout


def make_frames(tool, folder, count):
    for ending in ("raw", "tiff", "png"):
        for number in range(count):
            file = folder / f"frame_{number:04}.{ending}"
            if number >= DIFFERENT_FRAMES:
                shutil.copy(folder / f"frame_{number % DIFFERENT_FRAMES:04}.{ending}", file)
                continue
            quietly([tool, "simulate", "-o", file, "--width", str(WIDTH), "--height", str(HEIGHT),
                     "--bit-depth", "12", "--seed", str(number + 1)])  # fmt: skip


def cpu_seconds(work, times=8):
    """Processor time of a call, the least of several: neighbours can only add to it."""
    least = float("inf")
    for _ in range(times):
        start = time.process_time()
        work()
        least = min(least, time.process_time() - start)
    return least


def file_parts(folder):
    content = bytearray(FRAME_BYTES)
    source, target = folder / "frame_0000.raw", folder / "probe"

    def read():
        with open(source, "rb", buffering=0) as stream:
            stream.readinto(content)

    def write():
        target.unlink(missing_ok=True)
        with open(target, "wb", buffering=0) as stream:
            stream.write(content)

    parts = {"read": cpu_seconds(read), "write": cpu_seconds(write)}
    target.unlink()
    return parts


def transform_parts(tool):
    """By the planes, with commas."""
    sets = [run.planes for run in RUNS if run.planes]
    lists = ",".join(planes.replace(",", "+") for planes in dict.fromkeys(sets))
    command = [tool, "bench", "--json", "--threads", "1", "--time", "1", "--planes", lists]
    result = json.loads(quietly(command))
    own = result["machine"]["kernels"]
    rates = [rate for rate in result["rates"] if rate["kernels"] == own]
    seconds = {",".join(r["planes"]): r["processor_ms_per_frame"] / 1e3 for r in rates}
    return result["machine"], seconds


def codec_parts(program, folder):
    """Empty without the program."""
    if not program.exists():
        return {}
    command = [program, "--benchmark_filter=^(read|write)/png/fast$", "--benchmark_format=json"]
    environment = {**os.environ, "TMPDIR": str(folder)}
    results = json.loads(quietly(command, env=environment))["benchmarks"]
    seconds = {result["name"]: result["cpu_time"] / 1e3 for result in results}
    if set(seconds) != {"read/png/fast", "write/png/fast"}:
        return {}
    return {"decode": seconds["read/png/fast"], "encode": seconds["write/png/fast"]}


def sum_of_parts(run, parts, transforms):
    """Seconds of one core for a frame; None where a part was not measured."""
    if not run.planes:
        return None
    taking = parts.get("decode" if run.ending == "png" else "read")
    giving = parts.get("encode" if run.format == "png" else "write")
    if taking is None or giving is None:
        return None
    return taking + transforms[run.planes] + (run.planes.count(",") + 1) * giving


def measure(tool, run, folder, count, knows_overwrite):
    """Seconds by the clock, and of processors, of one run over all frames."""
    results = folder / "results"
    shutil.rmtree(results, ignore_errors=True)
    files = sorted(folder.glob(f"frame_*.{run.ending}"))[:count]
    command = [tool, "transform", *files, "-o", results, *run.arguments()]
    if knows_overwrite:
        command.append("--overwrite")
    with open(folder / "complaints", "w+") as complaints:
        start = time.perf_counter()
        child = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=complaints)
        _, status, usage = os.wait4(child.pid, 0)
        seconds = time.perf_counter() - start
        child.returncode = os.waitstatus_to_exitcode(status)
        complaints.seek(0)
        if child.returncode != 0:
            fail(f"{run.title}: {complaints.read().strip()}")
    shutil.rmtree(results)
    return seconds, usage.ru_utime + usage.ru_stime


def row(run, seconds, cpu, count, ideal_sum, cores):
    rate = count / seconds
    cells = [run.title, f"{rate:.1f}", f"{run.aim_rate:g}", f"{1e3 * cpu / count:.1f}"]
    cells.append("-" if run.aim_cpu is None else f"{run.aim_cpu:g}")
    if ideal_sum is None:
        return [*cells, "-", "-", "-"]
    ideal = cores / ideal_sum
    return [*cells, f"{1e3 * ideal_sum:.1f}", f"{ideal:.1f}", f"{rate / ideal:.2f}"]


def markdown(header, rows):
    lines = [header, ["---"] * len(header), *rows]
    return "".join(f"| {' | '.join(line)} |\n" for line in lines)


def report(machine, cores, count, rows, parts, transforms):
    header = ["", "frames/s", "aim", "CPU ms a frame", "aim", "parts, ms"]
    header += ["ideal frames/s", "ratio"]
    times = [f"{name} {1e3 * seconds:.1f}" for name, seconds in parts.items()]
    for names, seconds in transforms.items():
        times.append(f"transform to {names.count(',') + 1} planes {1e3 * seconds:.1f}")
    return (
        f"{markdown(header, rows)}\n"
        f"Milliseconds of one core: {', '.join(times)}.\n\n"
        f"{machine['processor']}, {cores} cores, {machine['kernels']}; {count} frames of "
        f"{WIDTH} x {HEIGHT}; {datetime.date.today()}.\n"
    )


def rewrite_readme(text):
    readme = HERE / "README.md"
    before, rest = readme.read_text().split(BEGIN)
    _, after = rest.split(END)
    readme.write_text(f"{before}{BEGIN}\n\n{text}\n{END}{after}")


def arguments():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--programs", type=Path, default=PROGRAMS, help="folder with the programs")
    parser.add_argument("--folder", type=Path, default=Path("/dev/shm"), help="a RAM disk")
    parser.add_argument("--frames", type=int, default=40, help="frames of each run")
    parser.add_argument("--repeats", type=int, default=2, help="runs, of which the fastest counts")
    parser.add_argument("--readme", action="store_true", help="put the table into README.md")
    return parser.parse_args()


def main():
    given = arguments()
    tool = given.programs / "kv-polarize"
    if not tool.exists():
        fail(f"{tool} is missing; build it, or name another folder with --programs")
    count = min(given.frames, shutil.disk_usage(given.folder).free // BYTES_A_FRAME)
    if count < 1 or given.repeats < 1:
        fail(f"no frame to measure; {given.folder} needs room for {BYTES_A_FRAME >> 20} MB a frame")
    if count < given.frames:
        print(f"{given.folder} has room for {count} frames; measuring these", file=sys.stderr)
    cores = len(os.sched_getaffinity(0))
    knows_overwrite = "--overwrite" in quietly([tool, "transform", "--help"])
    with tempfile.TemporaryDirectory(dir=given.folder, prefix="throughput-") as name:
        folder = Path(name)
        make_frames(tool, folder, count)
        parts = {**file_parts(folder), **codec_parts(given.programs / "file_benchmarks", folder)}
        machine, transforms = transform_parts(tool)
        rows = []
        for run in RUNS:
            repeats = range(given.repeats)
            times = [measure(tool, run, folder, count, knows_overwrite) for _ in repeats]
            ideal_sum = sum_of_parts(run, parts, transforms)
            rows.append(row(run, *min(times), count, ideal_sum, cores))
            print(markdown(rows[-1], []).splitlines()[0], file=sys.stderr)
    text = report(machine, cores, count, rows, parts, transforms)
    print(text)
    if given.readme:
        rewrite_readme(text)


if __name__ == "__main__":
    main()
