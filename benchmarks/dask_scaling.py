#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""What a second worker of Dask brings on this machine, and what Dask takes for a task.

    PYTHONPATH=build/release/python benchmarks/dask_scaling.py [--keep-memory]

Frames of 2448 x 2048 pixels with 12 bits lie uncompressed in a zarr store on a RAM disk, a frame a
chunk; a task takes eight of them. Three kinds of work, each by one and by two workers of a thread
each, which take turns:

    bare     transforms frames that are in memory
    read     reads and transforms, and drops the planes intensity and dolp
    store    reads and transforms, and writes the planes to another such store

Scheduler and client take their part of the same cores. So do strangers: each pair of rounds waits
until they are quiet, and counts if they took less than a tenth of a core in both. All processor
time of the machine that is not of this program or its workers is theirs. Medians are printed, with
processor time a frame of the workers.

As glibc and Dask are set up, memory of large arrays goes back to the system after each task, and
the next task has all its pages zeroed again; --keep-memory has the workers keep it.

Last, tasks that do next to nothing: what the scheduler takes for each.
"""

import argparse
import os
import shutil
import statistics
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

import dask.array as da
import numpy as np
import zarr
from dask.distributed import Client, LocalCluster, wait

import kv_polarization as kv
from kv_polarization.dask import transform

WIDTH, HEIGHT = 2448, 2048
FRAMES, FRAMES_STORED, FRAMES_A_TASK = 512, 256, 8  # 256 stored ones have 5 GB of planes
NAMES = ("intensity", "dolp")
STRANGERS = 0.1  # most of a core that others may take in a round that counts
PROCESSOR = kv.Processor(90, bit_depth=12)
TICK = 1 / os.sysconf("SC_CLK_TCK")
KEPT = {"MALLOC_MMAP_THRESHOLD_": 1 << 32, "MALLOC_TRIM_THRESHOLD_": 1 << 32, "MALLOC_ARENA_MAX": 1}


def make_frames(folder):
    """Eight different frames, over and over: files of a zarr store may be links to each other."""
    frames = zarr.open(
        f"{folder}/frames", "w", shape=(FRAMES, HEIGHT, WIDTH), chunks=(1, HEIGHT, WIDTH),
        dtype="u2", compressor=None,
    )  # fmt: skip
    random = np.random.default_rng(1)
    for index in range(FRAMES):
        if index < 8:
            frames[index] = random.integers(0, 4096, (HEIGHT, WIDTH), np.uint16)
        else:
            os.link(f"{folder}/frames/{index % 8}.0.0", f"{folder}/frames/{index}.0.0")
    return frames


def bare(block):
    """Planes of frames that are filled here, row by row alike, which costs little."""
    frames = np.empty((FRAMES_A_TASK, HEIGHT, WIDTH), np.uint16)
    frames[:] = np.arange(WIDTH)
    PROCESSOR.transform(frames, NAMES, threads=1)
    return block


def first_pixels(plane):
    return plane[:, :1, :1].copy()  # a view would keep the plane


def works(frames, folder):
    """The kinds of work, each as a function that makes what a client computes."""
    chunks = da.from_zarr(frames, chunks=(FRAMES_A_TASK, -1, -1))
    planes = transform(chunks, PROCESSOR, NAMES)
    stored = [plane[:FRAMES_STORED] for plane in planes.asdict().values()]
    stores = [zarr.open_like(frames, f"{folder}/{name}", mode="w") for name in NAMES]

    def first(plane):
        return plane.map_blocks(first_pixels, chunks=(plane.chunks[0], 1, 1)).sum()

    return {
        "bare": lambda: da.zeros(FRAMES, chunks=FRAMES_A_TASK).map_blocks(bare, dtype=float).sum(),
        "read": lambda: first(planes.intensity) + first(planes.dolp),
        "store": lambda: da.store(stored, stores, lock=False, compute=False),
    }


def busy_seconds():
    """Of all processors together."""
    fields = [int(field) for field in Path("/proc/stat").read_text().split("\n")[0].split()[1:]]
    idle_and_waiting = fields[3] + fields[4]
    return (sum(fields[:8]) - idle_and_waiting) * TICK


def seconds_of(processes):
    total = 0
    for process in processes:
        fields = Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()
        total += int(fields[11]) + int(fields[12])
    return total * TICK


@dataclass
class Round:
    seconds: float
    worker_time: float  # of the processor, all workers
    scheduler_time: float  # with the client's
    strangers: float  # cores


class Watch:
    """What was taken of the processors since it began."""

    def __init__(self, clients):
        self.workers = [pid for client in clients for pid in client.run(os.getpid).values()]
        self.start = self._now()

    def _now(self):
        times = time.perf_counter(), busy_seconds(), seconds_of([os.getpid()])
        return np.array([*times, seconds_of(self.workers)])

    def read(self):
        seconds, busy, here, workers = self._now() - self.start
        return Round(seconds, workers, here, (busy - here - workers) / seconds)


def wait_for_quiet(clients):
    while True:
        watch = Watch(clients)
        time.sleep(0.5)
        if watch.read().strangers < STRANGERS:
            return


def timed(client, collection, idle):
    watch = Watch([client, idle])
    client.compute(collection).result()
    return watch.read()


def measure(one, two, make, rounds):
    """Pairs of rounds in quiet moments."""
    pairs = []
    for _ in range(10 * rounds):
        wait_for_quiet([one, two])
        pair = timed(one, make(), two), timed(two, make(), one)
        if max(part.strangers for part in pair) < STRANGERS:
            pairs.append(pair)
        if len(pairs) == rounds:
            break
    return pairs


def report(name, pairs):
    frames = FRAMES_STORED if name == "store" else FRAMES

    def median(of):
        return statistics.median(map(of, pairs)) if pairs else float("nan")

    print(
        f"| {name} | {frames / median(lambda p: p[0].seconds):.0f} "
        f"| {frames / median(lambda p: p[1].seconds):.0f} "
        f"| {median(lambda p: p[0].seconds / p[1].seconds):.2f} "
        f"| {1000 / frames * median(lambda p: p[0].worker_time):.1f} "
        f"| {1000 / frames * median(lambda p: p[1].worker_time):.1f} "
        f"| {median(lambda p: p[1].scheduler_time / p[1].seconds):.2f} "
        f"| {median(lambda p: p[1].strangers):.2f} | {len(pairs)} |",
        flush=True,
    )


def report_tasks(client):
    """Of a graph like that of `transform`, whose tasks take next to no time."""
    frames = da.zeros((5000, 4, 4), chunks=(1, 4, 4), dtype=np.uint16)
    planes = transform(frames, PROCESSOR, NAMES)
    wait_for_quiet([client])
    watch = Watch([client])
    wait(client.persist([planes.intensity, planes.dolp]))
    taken = watch.read()
    tasks = 3 * frames.npartitions
    print(
        f"\nA task takes {1e6 * taken.scheduler_time / tasks:.0f} us of the process of scheduler "
        f"and client, {1e6 * taken.seconds / tasks:.0f} us of the clock."
    )


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--folder", default="/dev/shm", help="where 6 GB have room, in memory")
    parser.add_argument("--rounds", type=int, default=7, help="pairs that count")
    parser.add_argument("--keep-memory", action="store_true")
    options = parser.parse_args()
    if options.keep_memory:  # Dask hands this to its workers before they start
        os.environ.update({name: str(value) for name, value in KEPT.items()})
    common = {"threads_per_worker": 1, "host": "127.0.0.1", "dashboard_address": "127.0.0.1:0"}
    folder = tempfile.mkdtemp(dir=options.folder)
    try:
        frames = make_frames(folder)
        print("| work | frames/s, one worker | two workers | gain | ms of a core, one ", end="")
        print("| two | cores of scheduler and client | of strangers | rounds |")
        print("| --- " * 9 + "|")
        with LocalCluster(n_workers=1, **common) as first, Client(first) as one:
            with LocalCluster(n_workers=2, **common) as second, Client(second) as two:
                for name, make in works(frames, folder).items():
                    one.compute(make()).result()  # to warm up
                    two.compute(make()).result()
                    report(name, measure(one, two, make, options.rounds))
                report_tasks(two)
    finally:
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
