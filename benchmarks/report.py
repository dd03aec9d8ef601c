#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Measures, and writes the tables of README.md, that of the project's README, and the chart.

    benchmarks/report.py                 runs the programs of build/release, some ten minutes
    benchmarks/report.py --from FOLDER   takes the JSON files of an earlier run

Needs Debian's python3-matplotlib: scripts/setup --benchmarks. Let nothing else run meanwhile.
"""

import argparse
import json
import subprocess
from pathlib import Path

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402 (the backend is chosen first)

HERE = Path(__file__).resolve().parent
PROGRAMS = HERE.parent / "build" / "release"
BEGIN, END = "<!-- tables: made by report.py -->\n", "<!-- end of tables -->\n"

PATHS = {
    "sse2": "SSE2, in the library",
    "sse41": "SSE4.1, in the library",
    "avx2": "AVX2 module",
    "avx512": "AVX-512 module",
}
OUTPUTS = {
    "intensity": "intensity",
    "stokes_s1": "stokes_s1",
    "azimuth": "azimuth",
    "dolp": "dolp",
    "intensity+azimuth+dolp": "int+azi+dolp",
    "five_planes": "five 16-bit",
    "all_six": "all six",
    "normalized_stokes": "normalized",
}
# Of 64 x 64 pixels the probe is most; see the table of small frames.
# What a run's file is named, and its program.
RUNS = {
    "frames": "frame_benchmarks",
    "calls": "call_benchmarks",
    "toolkit": "toolkit_benchmarks",
    "maps": "map_benchmarks",
}
TABLES = (
    ("640x512", "unscaled", "warm"),
    ("2448x2048", "unscaled", "ring"),
    ("2448x2048", "unscaled", "warm"),
    ("2448x2048", "scaled", "ring"),
    ("4096x3000", "unscaled", "ring"),
)
# Of these the project's own README shows the planes.
FRONT_TABLE = ("2448x2048", "unscaled", "ring")
FRONT_OUTPUTS = ("intensity", "azimuth", "intensity+azimuth+dolp", "five_planes", "all_six")
HEADLINE_SIZE, HEADLINE_OUTPUTS = "2448x2048", "intensity+azimuth+dolp"


def measure(folder):
    for name, program in RUNS.items():
        subprocess.run(
            [PROGRAMS / program, f"--benchmark_out={folder / name}.json"], check=True, cwd=folder
        )


def load(folder, name):
    """The context of a run, and what each benchmark measured, by name; skipped ones left out."""
    run = json.loads((folder / f"{name}.json").read_text())
    results = {b["name"]: b for b in run["benchmarks"] if not b.get("error_occurred")}
    return run["context"], results


def markdown(header, rows):
    lines = [header, ["---"] * len(header), *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def frame(frames, size, outputs, scaling, buffers, path):
    return frames.get(f"{size}/{outputs}/{scaling}/{buffers}/{path}/manual_time")


def frame_table(frames, size, scaling, buffers, columns=OUTPUTS):
    def cell(outputs, path):
        result = frame(frames, size, outputs, scaling, buffers, path)
        if result is None:
            return "-"
        return f"{result['ms']:#.3g} ({result['x_copy']:.1f})"

    paths = dict(PATHS)
    if frame(frames, size, HEADLINE_OUTPUTS, scaling, buffers, "opencv"):
        paths["opencv"] = "OpenCV"
    rows = [[title, *(cell(outputs, path) for outputs in columns)] for path, title in paths.items()]
    return markdown(["", *columns.values()], rows)


def latency_table(calls):
    probe = calls["probe"]["real_time"]
    sizes = sorted(
        {name.split("/")[1] for name in calls if name.startswith("latency/")},
        key=lambda size: int(size.split("x")[0]),
    )

    def cell(size, path):
        result = calls.get(f"latency/{size}/{path}")
        if result is None:
            return "-"
        # The SSE2 form is called without the probe: no processor of today gets it by the export.
        kernel = result["real_time"] - (0 if path == "sse2" else probe)
        return f"{kernel:#.3g}"

    rows = [[title, *(cell(size, path) for size in sizes)] for path, title in PATHS.items()]
    return (
        f"Microseconds of a call beside the {probe:.1f} of the probe:\n\n"
        + markdown(["", *sizes], rows)
    )


def threads_table(calls):
    rows = []
    for path, title in PATHS.items():
        one, two = (calls.get(f"frames/{path}/real_time/threads:{n}") for n in (1, 2))
        if one and two:
            rates = one["frames/s"], two["frames/s"]
            rows.append([title, f"{rates[0]:.0f}", f"{rates[1]:.0f}", f"{rates[1] / rates[0]:.2f}"])
    return markdown(["", "1 thread", "2 threads", "gain"], rows)


TOOLKIT_ROWS = {
    "threads:1": "one thread",
    "threads:2": "two threads",
    "weights/threads:1": "weights in every pixel, one thread",
    "weights/threads:2": "weights in every pixel, two threads",
    "left_aligned": "copied first, one thread",
}


def toolkit_table(toolkit, size):
    width, height = map(int, size.split("x"))

    def plain(outputs):
        result = toolkit[f"{size}/{outputs}/threads:1/manual_time"]
        return f"{width * height / 1e3 / result['plain_MP/s']:#.3g}"

    def cell(outputs, row):
        result = toolkit[f"{size}/{outputs}/{row}/manual_time"]
        return f"{result['ms']:#.3g} ({result['x_plain']:.2f})"

    rows = [["the plain call", *map(plain, OUTPUTS)]]
    rows += [[title, *(cell(o, row) for o in OUTPUTS)] for row, title in TOOLKIT_ROWS.items()]
    return markdown(["", *OUTPUTS.values()], rows)


def maps_table(maps):
    planes = "planes: intensity azimuth dolp"
    rows = [[planes, f"{maps[planes]['real_time']:.1f}", ""]]
    for name in [name for name in maps if name.endswith("/threads:1/real_time")]:
        title = name.split("/")[0]
        one, two = (maps[f"{title}/threads:{n}/real_time"]["real_time"] for n in (1, 2))
        rows.append([title, f"{one:.1f}", f"{two:.1f}"])
    for name in ("mean plane", "region: whole frame"):
        rows.append([name, f"{maps[name]['real_time']:.1f}", ""])
    return markdown(["milliseconds a frame", "one thread", "two threads"], rows)


def machine(context):
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            model = line.split(":")[1].strip()
            break
    caches = ", ".join(
        f"L{c['level']} {c['type'].lower()} {c['size'] // 1024} KiB" for c in context["caches"]
    )
    return (
        f"{model}, {context['num_cpus']} virtual processors, {caches}; "
        f"{context['compiler']}; {context['date'][:10]}.\n"
    )


def tables(context, frames, calls, toolkit, maps):
    parts = [machine(context) + "\nMilliseconds a frame, and the ratio to the copy:\n"]
    for size, scaling, buffers in TABLES:
        title = size.replace("x", " x ")
        table = frame_table(frames, size, scaling, buffers)
        parts.append(f"### {title}, {scaling}, {buffers}\n\n{table}")
    parts.append(f"### Small frames\n\n{latency_table(calls)}")
    parts.append(f"### Frames a second on one and two threads\n\n{threads_table(calls)}")
    for size in ("2448x2048", "640x512"):
        title = f"The toolkit's whole frames, {size.replace('x', ' x ')}"
        parts.append(f"### {title}\n\n{toolkit_table(toolkit, size)}")
    parts.append(f"### The toolkit's maps, 2448 x 2048\n\n{maps_table(maps)}")
    return "\n".join(parts)


def chart(frames, file):
    plt.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "chart", "font.size": 10})
    figure, (left, right) = plt.subplots(
        1, 2, figsize=(10, 3.4), width_ratios=(2, 3), layout="constrained"
    )
    titles = {"opencv": "OpenCV", **PATHS}
    shades = dict(zip(titles, ("#999999", "#b6d0e8", "#74a9d4", "#2f78b3", "#0b3d6b")))

    rates = {}
    for path in titles:
        result = frame(frames, HEADLINE_SIZE, HEADLINE_OUTPUTS, "unscaled", "warm", path)
        if result:
            rates[path] = 1000 / result["ms"]
    bars = left.barh(
        [titles[p] for p in rates], list(rates.values()), color=[shades[p] for p in rates]
    )
    left.bar_label(bars, fmt="%.0f", padding=3)
    left.invert_yaxis()
    left.margins(x=0.15)
    left.set_title("Intensity, azimuth and DoLP: frames a second, 2448 x 2048", fontsize=10)

    paths = [p for p in PATHS if p != "sse2"]
    for number, path in enumerate(paths):
        results = [
            frame(frames, HEADLINE_SIZE, o, "unscaled", "ring", path) for o in OUTPUTS
        ]
        places = [i + (number - 1) * 0.27 for i in range(len(OUTPUTS))]
        heights = [r["ms"] if r else 0 for r in results]
        right.bar(places, heights, 0.25, label=PATHS[path], color=shades[path])
    right.set_xticks(range(len(OUTPUTS)), OUTPUTS.values(), rotation=20, ha="right")
    right.set_title("Milliseconds a frame of 2448 x 2048, in a ring", fontsize=10)
    right.legend(fontsize=8)
    for axes in (left, right):
        axes.spines[["top", "right"]].set_visible(False)
    figure.savefig(file, metadata={"Date": None, "Creator": None})


def rewrite(readme, text):
    """Puts the text between the marks."""
    before, rest = readme.read_text().split(BEGIN)
    _, after = rest.split(END)
    readme.write_text(before + BEGIN + "\n" + text + "\n" + END + after)


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--from", dest="folder", type=Path, help="folder with the JSON files")
    folder = parser.parse_args().folder
    if folder is None:
        folder = PROGRAMS
        measure(folder)
    context, frames = load(folder, "frames")
    others = [load(folder, name)[1] for name in RUNS if name != "frames"]

    rewrite(HERE / "README.md", tables(context, frames, *others))
    front = {outputs: OUTPUTS[outputs] for outputs in FRONT_OUTPUTS}
    table = frame_table(frames, *FRONT_TABLE, front)
    rewrite(HERE.parent / "README.md", f"{table}\n{machine(context)}")
    chart(frames, HERE / "frames.svg")


if __name__ == "__main__":
    main()
