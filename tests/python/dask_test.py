# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Planes of dask arrays: the bytes of one process, on every scheduler and on a real cluster."""

import os
import pickle
import signal
import time

import dask
import dask.array as da
import dask.array.image
import h5py
import numpy as np
import pytest
import tifffile
import zarr
from calibration_test import ANGLES, FRAMES, STACK
from dask.distributed import Client, LocalCluster

import kv_polarization as kv
from kv_polarization.dask import CHUNK_BYTES, transform

PROCESSOR = kv.Processor(90, bit_depth=12)
MEMORY = 320 << 20  # of a worker; its libraries take half
NAMES = ("intensity", "dolp")


def frames_of(*leading, rows=24, columns=40):
    return np.random.default_rng(3).integers(0, 4096, (*leading, rows, columns), np.uint16)


@pytest.fixture(scope="module")
def client(tmp_path_factory):
    with LocalCluster(
        n_workers=2,
        threads_per_worker=1,
        memory_limit=MEMORY,
        host="127.0.0.1",
        dashboard_address="127.0.0.1:0",
        local_directory=str(tmp_path_factory.mktemp("workers")),
    ) as cluster, Client(cluster) as client:
        yield client


class Counted:
    """An array that counts the chunks read from it."""

    def __init__(self, array):
        self.array, self.shape, self.dtype, self.ndim = array, array.shape, array.dtype, array.ndim
        self.reads = 0

    def __getitem__(self, place):
        part = self.array[place]
        self.reads += part.size > 0  # dask looks for the type in an empty part
        return part


def test_a_chunk_is_read_and_made_once_for_all_planes_and_not_before():
    counted = Counted(frames_of(5, 3))
    planes = transform(da.from_array(counted, chunks=(2, 3, -1, -1)), PROCESSOR, kv.PLANES)
    assert counted.reads == 0
    (graph,) = dask.optimize(planes)
    tasks = {key for plane in graph.asdict().values() for key in plane.__dask_graph__()}
    assert sum(str(key).startswith("('transform-") for key in tasks) == 3
    (computed,) = dask.compute(planes, scheduler="threads")
    assert counted.reads == 3
    expected = PROCESSOR.transform(counted.array, kv.PLANES)
    for name in kv.PLANES:
        assert computed[name].tobytes() == expected[name].tobytes(), name
        assert planes[name].shape == expected[name].shape
        assert planes[name].dtype == expected[name].dtype


def test_sources_and_schedulers(client, tmp_path):
    frames = frames_of(6)
    expected = PROCESSOR.transform(frames)
    zarr.save_array(tmp_path / "frames.zarr", frames, chunks=(2, 24, 40))
    for index, frame in enumerate(frames):
        tifffile.imwrite(tmp_path / f"{index}.tiff", frame)
    tifffile.imwrite(tmp_path / "stack.tiff", frames)
    with h5py.File(tmp_path / "frames.h5", "w") as file:
        file["frames"] = frames
    files = da.image.imread(str(tmp_path / "?.tiff"), imread=tifffile.imread)
    stack = tifffile.imread(tmp_path / "stack.tiff", aszarr=True)
    with h5py.File(tmp_path / "frames.h5", "r") as file, stack:
        sources = {
            "zarr": (da.from_zarr(str(tmp_path / "frames.zarr")), ("sync", "processes", client)),
            "files": (files, ("threads", "processes", client)),
            # tifffile's store is for one thread at a time.
            "stack": (da.from_zarr(zarr.open(stack, mode="r")), ("sync",)),
            "HDF5": (da.from_array(file["frames"], chunks=(4, -1, -1)), ("threads", client)),
        }
        for source, (array, schedulers) in sources.items():
            for scheduler in schedulers:
                (planes,) = dask.compute(transform(array, PROCESSOR), scheduler=scheduler)
                for name in NAMES:
                    assert planes[name].tobytes() == expected[name].tobytes(), (source, scheduler)


def test_keys_are_equal_for_equal_calls_alone(client):
    def names(weight=1, frames=0, **settings):
        sensor = kv.Processor(bit_depth=12, weights=np.full((4, 4, 4), weight, np.float32))
        planes = transform(da.full((4, 4), frames, dtype="u2"), sensor, **settings)
        return [plane.name for plane in planes.asdict().values()]

    assert names() == names() == client.submit(names).result(timeout=30)
    different = [{"weight": 2}, {"frames": 1}, {"output_max": 255}, {"planes": NAMES[::-1]}]
    assert not any(set(names()) & set(names(**case)) for case in different)
    calibrated = kv.Processor(calibration=kv.Calibration.fit(FRAMES, ANGLES, **STACK))
    keys = {
        transform(da.from_array(FRAMES), processor).dolp.name
        for processor in (calibrated, pickle.loads(pickle.dumps(calibrated)))
    }
    assert len(keys) == 1


@pytest.mark.parametrize("change, part", [
    (lambda frames: frames.compute(), "from_array"),
    (lambda frames: frames[0, 0], "two axes"),
    (lambda frames: frames.rechunk((1, 12, 40)), "rechunk({-1: -1, -2: -1})"),
    (lambda frames: frames.rechunk((1, 24, 20)), "1 x 2"),
    (lambda frames: frames[0][frames[0, :, 0] > 7], "compute_chunk_sizes"),
    (lambda frames: frames.astype(np.int32), "uint16"),
    (lambda frames: frames[..., :1], "2 or more"),
])  # fmt: skip
def test_what_cannot_be_transformed_is_refused_before_it_is_read(change, part):
    with pytest.raises((TypeError, ValueError)) as error:
        transform(change(da.from_array(frames_of(2), chunks=(1, 24, 40))), PROCESSOR)
    assert part in str(error.value)


def test_chunks_too_large_for_workers_are_told():
    frames = da.zeros((400, 1000, 1000), dtype="u2", chunks=(200, -1, -1))  # 6 MB each, with planes
    with pytest.warns(da.PerformanceWarning, match=f"of {CHUNK_BYTES // 6000000} frames"):
        transform(frames, PROCESSOR)


@pytest.fixture(scope="module")
def night(tmp_path_factory):
    """A zarr array of 400 MB, more than a worker may have."""
    path = str(tmp_path_factory.mktemp("night") / "frames.zarr")
    array = zarr.open(path, "w", shape=(160, 1024, 1224), chunks=(4, 1024, 1224), dtype="u2")
    ramp = np.arange(1024 * 1224, dtype=np.uint32).reshape(1024, 1224)
    for first in range(0, 160, 4):  # smooth, as it is to be stored quickly
        array[first : first + 4] = ramp * np.arange(first, first + 4)[:, None, None] // 2**14 % 4096
    assert array.nbytes > MEMORY
    return array


def store(client, night, path):
    """Has all planes of the night stored; returns the arrays and the future of their completion."""
    stores = [zarr.open(f"{path}/{name}", "w", **_layout(night)) for name in NAMES]
    planes = transform(da.from_zarr(night), PROCESSOR, NAMES)
    delayed = da.store(list(planes.asdict().values()), stores, lock=False, compute=False)
    return stores, client.compute(delayed)


def _layout(array):
    return {"shape": array.shape, "chunks": array.chunks, "dtype": array.dtype}


def check(stores, night):
    for first in range(0, len(night), 4):
        expected = PROCESSOR.transform(night[first : first + 4], NAMES)
        for name, planes in zip(NAMES, stores):
            assert np.array_equal(planes[first : first + 4], expected[name]), (name, first)


def test_a_night_larger_than_memory_goes_through_with_a_processor_a_worker(client, night, tmp_path):
    def count_processors():
        kv.Processor.made = 0
        once = kv.Processor.__post_init__

        def counted(self):
            kv.Processor.made += 1
            once(self)

        kv.Processor.__post_init__ = counted

    client.restart()
    client.run(count_processors)
    workers = client.run(os.getpid)
    stores, done = store(client, night, tmp_path)
    done.result(timeout=60)
    check(stores, night)
    assert client.run(os.getpid) == workers
    assert set(client.run(lambda: kv.Processor.made).values()) == {1}


def test_a_killed_worker_loses_nothing(client, night, tmp_path):
    stores, done = store(client, night, tmp_path)
    while stores[1].nchunks_initialized < 8:
        assert not done.done()
        time.sleep(0.01)
    os.kill(list(client.run(os.getpid).values())[0], signal.SIGKILL)
    done.result(timeout=60)
    check(stores, night)
