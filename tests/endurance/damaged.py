# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""A night of thousands of frames, a twentieth of which is damaged."""

import pathlib
import random
import subprocess
import time

from setting import Setting, expect, files_in

WIDTH, HEIGHT = 48, 32


def pgm(samples: bytes, width: int = WIDTH, height: int = HEIGHT) -> bytes:
    return b"P5 %d %d 4095\n" % (width, height) + samples


def damage(path: pathlib.Path, kind: int, good: bytes, noise: random.Random) -> None:
    contents = [
        good[: len(good) // 2],  # truncated in the samples
        good[:5],  # and in the header
        noise.randbytes(1000),
        b"",
        pgm(good[-2 * WIDTH * HEIGHT :], 100000, 100000),  # more than the file holds
        pgm(good[-2 * WIDTH * HEIGHT :], 0, HEIGHT),
        b"\x89PNG\r\n\x1a\n" + noise.randbytes(100),
        b"II*\0" + noise.randbytes(100),
        None,
    ]
    content = contents[kind % len(contents)]
    if content is None:
        path.mkdir()  # with the name of a frame
    else:
        path.write_bytes(content)


def run(setting: Setting) -> str:
    frames = 1000 if setting.quick else 10000
    noise = random.Random(1)
    night = setting.work / "night"
    night.mkdir()
    bad = set(noise.sample(range(frames), frames // 20))
    for number in range(frames):
        levels = [noise.randrange(16) * 256 + noise.randrange(256) for _ in range(8)]
        row = b"".join(level.to_bytes(2, "big") for level in levels) * (WIDTH // 8)
        good = pgm(row * HEIGHT)
        path = night / f"frame_{number:05}.pgm"
        if number in bad:
            damage(path, sorted(bad).index(number), good, noise)
        else:
            path.write_bytes(good)
    (setting.work / "list.txt").write_text(
        "".join(f"night/frame_{number:05}.pgm\n" for number in range(frames))
    )
    resident, error, status = _watched(setting)
    expect(status == 1, f"status {status}: {error[-300:]}")
    lines = error.splitlines()
    for number in bad:
        name = f"night/frame_{number:05}.pgm"
        count = sum(name in line for line in lines)
        expect(count == 1, f"{name} is damaged, and named {count} times")
    results = files_in(setting.work / "out").keys() - {"kv-polarize.journal"}
    wanted = {f"frame_{number:05}_dolp.pgm" for number in range(frames) if number not in bad}
    expect(results == wanted, f"{len(results)} results instead of {len(wanted)}")
    failed = (setting.work / "failed.txt").read_text().split()
    expect(len(failed) == len(bad), f"--list-failed has {len(failed)} names")
    # Names, totals and the lines of the journal stay; a frame's memory does not. Heaps of threads
    # settle within 4 MiB.
    grown = resident[-1] - resident[len(resident) // 5]
    expect(grown < 4096 + frames, f"{grown} KiB more for {frames} frames: {resident}")
    return (
        f"{frames} frames, {len(bad)} damaged, each of these named once, {len(results)} results; "
        f"resident {resident[0]} KiB first, {resident[len(resident) // 5]} after a fifth, "
        f"{resident[-1]} last, {max(resident)} at most; {len(resident)} samples"
    )


def _watched(setting: Setting) -> tuple[list[int], str, int]:
    """Resident KiB of the tool while it runs, what it complained of, and its exit status."""
    with open(setting.work / "error", "w+") as error:
        batch = subprocess.Popen(
            [setting.tool, "transform", "@list.txt", "-o", "out", "--planes", "dolp", "--no-pictures",
             "--format", "pgm", "--list-failed", "failed.txt"],
            cwd=setting.work, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=error,
        )  # fmt: skip
        resident = []
        while batch.poll() is None:
            status = pathlib.Path(f"/proc/{batch.pid}/status").read_text()
            found = [line for line in status.splitlines() if line.startswith("VmRSS:")]
            if found and list((setting.work / "out").glob("frame_*"))[:1]:
                resident.append(int(found[0].split()[1]))
            time.sleep(0.02)
        error.seek(0)
        return resident or [0], error.read(), batch.returncode
