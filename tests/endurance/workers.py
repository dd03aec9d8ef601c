# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Workers of a cluster on this machine, killed while they compute.

Started by itself with a folder and a number of kills, this is the program whose workers are killed.
"""

import subprocess
import sys

from setting import Setting, Skipped, expect


def run(setting: Setting) -> str:
    python = "/usr/bin/python3"  # the one that the package is built for
    environment = setting.environment(PYTHONPATH=str(setting.build / "python"), MALLOC_ARENA_MAX="1")
    probe = [python, "-c", "import kv_polarization.dask, distributed"]
    if subprocess.run(probe, env=environment, capture_output=True, check=False).returncode != 0:
        raise Skipped("kv_polarization was not built, or there is no distributed")
    done = subprocess.run(
        [python, __file__, "3" if setting.quick else "200"], cwd=setting.work, env=environment,
        capture_output=True, text=True, timeout=1800, check=False,
    )  # fmt: skip
    expect(done.returncode == 0, done.stderr[-2000:])
    return done.stdout.strip()


def main(kills: int) -> None:
    import random
    import time

    import dask
    import dask.array as da
    import kv_polarization as kv
    import numpy as np
    from distributed import Client, LocalCluster
    from kv_polarization.dask import transform

    # A worker that dies four times over one task is taken for the task's fault by default.
    dask.config.set({"distributed.scheduler.allowed-failures": 1000,
                     "distributed.admin.log-length": 0})  # fmt: skip
    names = ("intensity", "dolp")
    frames = np.random.default_rng(1).integers(0, 4096, (256, 256, 320), dtype=np.uint16)
    processor = kv.Processor(phase=90, bit_depth=12)
    expected = processor.transform(frames, names)
    random_place = random.Random(1)
    killed = computed = 0
    with LocalCluster(n_workers=0, dashboard_address=None, silence_logs=50) as cluster, Client(
        cluster
    ) as client:
        command = [sys.executable, "-m", "distributed.cli.dask_worker", cluster.scheduler_address,
                   "--no-nanny", "--nthreads", "1", "--no-dashboard"]  # fmt: skip

        def start() -> subprocess.Popen[bytes]:
            return subprocess.Popen(command, stderr=subprocess.DEVNULL)

        workers = [start() for _ in range(4)]
        try:
            while killed < kills:
                array = da.from_array(frames, chunks=(4, -1, -1), name=f"frames-{computed}")
                planes = transform(array, processor, names)
                futures = client.compute([planes[name] for name in names])
                while killed < kills and not all(future.done() for future in futures):
                    time.sleep(random_place.uniform(0, 0.3))
                    if len(cluster.scheduler.workers) < 2:
                        continue  # so that work goes on
                    place = random_place.randrange(len(workers))
                    workers[place].kill()
                    workers[place].wait()
                    workers[place] = start()
                    killed += 1
                for name, future in zip(names, futures):
                    assert future.result(timeout=300).tobytes() == expected[name].tobytes(), name
                computed += 1
        finally:
            for worker in workers:
                worker.kill()
                worker.wait()
    print(f"{killed} kills of 4 workers in {computed} computations of {len(frames)} frames, "
          "each with the bytes of Processor.transform")  # fmt: skip


if __name__ == "__main__":
    main(int(sys.argv[1]))
