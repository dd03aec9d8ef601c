#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Planes of a zarr array of frames, on all cores or on a cluster, into a zarr group.

    cluster.py night.zarr planes.zarr --phase 90 --bit-depth 12
    cluster.py night.zarr planes.zarr --scheduler tcp://10.0.0.1:8786
    cluster.py night.zarr planes.zarr --scheduler scheduler.json

The frames are an array (frames, rows, columns). An ended run goes on where it was: frames are done
in slabs, and the group tells how many frames are behind it.
"""

import argparse
import os

import dask.array as da
import zarr
from dask.distributed import Client

import kv_polarization as kv
from kv_polarization.dask import transform


def arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("frames", help="a zarr array (frames, rows, columns)")
    parser.add_argument("planes", help="the zarr group to write, or to go on with")
    parser.add_argument("--scheduler", help="address or file of a scheduler; this machine without")
    parser.add_argument("--names", nargs="+", default=["intensity", "dolp"], choices=kv.PLANES)
    parser.add_argument("--phase", type=int, default=0)
    parser.add_argument("--bit-depth", type=int)
    parser.add_argument("--chunk", type=int, default=8, help="frames a task; 8 as it is")
    parser.add_argument("--slab", type=int, default=10000, help="tasks between two marks")
    return parser.parse_args()


def connect(scheduler):
    if not scheduler:
        return Client(n_workers=os.cpu_count(), threads_per_worker=1, dashboard_address=":0")
    if os.path.exists(scheduler):
        return Client(scheduler_file=scheduler)
    return Client(scheduler)


def main():
    options = arguments()
    source = zarr.open_array(options.frames, mode="r")
    # Tasks write whole chunks of the store, so that no two of them meet in one.
    chunk = -(-options.chunk // source.chunks[0]) * source.chunks[0]
    frames = da.from_zarr(source, chunks=(chunk, -1, -1))
    processor = kv.Processor(options.phase, bit_depth=options.bit_depth)
    planes = transform(frames, processor, options.names)

    results = zarr.open_group(options.planes, mode="a")
    stores = [
        results.require_dataset(
            name,
            plane.shape,
            dtype=plane.dtype,
            exact=True,
            chunks=source.chunks[:1] + plane.shape[1:],
        )
        for name, plane in planes.asdict().items()
    ]
    with connect(options.scheduler):
        for first in range(results.attrs.get("frames_done", 0), len(frames), chunk * options.slab):
            region = slice(first, min(first + chunk * options.slab, len(frames)))
            slab = [plane[region] for plane in planes.asdict().values()]
            da.store(slab, stores, regions=[(region,)] * len(slab), lock=False)
            results.attrs["frames_done"] = region.stop
            print(f"{region.stop} of {len(frames)} frames", flush=True)


if __name__ == "__main__":
    main()
