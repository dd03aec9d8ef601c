# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""One processor in several threads and processes, and in ones that are interrupted."""

import concurrent.futures
import multiprocessing
import signal
import threading
import time

import numpy as np
import pytest

import kv_polarization as kv

PROCESSOR = kv.Processor(90)
FRAMES = np.random.default_rng(3).integers(0, 65535, (6, 256, 640), np.uint16)


def dolp_bytes(threads):
    return PROCESSOR.transform(FRAMES, "dolp", threads=threads).dolp.tobytes()


@pytest.mark.parametrize("method", ["fork", "spawn"])
def test_processes_get_what_their_parent_gets(method):
    expected = [dolp_bytes(threads) for threads in (1, 2, 2)]  # whose threads no child has
    context = multiprocessing.get_context(method)
    with context.Pool(2) as pool:
        assert pool.map_async(dolp_bytes, (1, 2, 2)).get(timeout=60) == expected


def test_threads_share_a_processor():
    expected = dolp_bytes(1)
    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        assert all(result == expected for result in pool.map(dolp_bytes, [1, 2] * 40))


def test_other_threads_go_on_meanwhile():
    many = np.broadcast_to(FRAMES, (100, *FRAMES.shape))
    out = np.empty(many.shape, np.uint16)
    steps, done = 0, threading.Event()

    def work():
        PROCESSOR.transform(many, "azimuth", out=out, threads=1)
        done.set()

    threading.Thread(target=work).start()
    while not done.wait(0.001):
        steps += 1
    assert steps > 20


@pytest.mark.parametrize("threads", [1, 2])
def test_an_interrupt_ends_a_long_call(threads):
    small = np.broadcast_to(FRAMES[0, :32, :64], (1_000_000, 32, 64))  # 10 s

    def interrupt(number, frame):
        raise KeyboardInterrupt

    before = signal.signal(signal.SIGALRM, interrupt)
    try:
        signal.setitimer(signal.ITIMER_REAL, 0.3)
        began = time.monotonic()
        with pytest.raises(KeyboardInterrupt):
            PROCESSOR.transform(small, "dolp", threads=threads)
        assert time.monotonic() - began < 3
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, before)
    assert dolp_bytes(threads) == dolp_bytes(1)
