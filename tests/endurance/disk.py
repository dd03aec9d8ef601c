# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Disks that are full or cannot be written to, and folders that vanish while a batch runs."""

import os
import pathlib
import shutil
import subprocess
import sys
import time

from setting import Failed, Setting, Skipped, expect, expect_same, expect_whole, files_in

BATCH = ("transform", "night", "--format", "npy", "--pictures", "angle")
PAGE = 4096


def run(setting: Setting) -> str:
    """Mounting wants a namespace of its own: the work is done by a process within."""
    unshare = ["unshare", "--mount"] if os.geteuid() == 0 else ["unshare", "-r", "--mount"]
    try:
        subprocess.run(
            [*unshare, "mount", "-t", "tmpfs", "tmpfs", "/mnt"], check=True, capture_output=True
        )
    except (OSError, subprocess.CalledProcessError):
        raise Skipped("nothing can be mounted here, even in a namespace of its own") from None
    quick = ["quick"] if setting.quick else []
    words = [sys.executable, __file__, str(setting.build), str(setting.work), *quick]
    done = subprocess.run([*unshare, *words], capture_output=True, text=True, check=False)
    expect(done.returncode == 0, (done.stdout + done.stderr).strip())
    return done.stdout.strip()


def mount(folder: pathlib.Path, options: str) -> None:
    subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", folder], check=True)


def refused(setting: Setting, words: tuple[str, ...], statuses: tuple[int, ...], part: str) -> str:
    done = setting.run(*words)
    what = f"kv-polarize {' '.join(words)}: status {done.returncode}, {done.stderr}"
    expect(done.returncode in statuses, what)
    lines = done.stderr.splitlines()
    expect(bool(lines) and all(line.startswith("kv-polarize: ") for line in lines), what)
    expect(part in done.stderr, f"{what}: nothing of '{part}'")
    return done.stderr


def full_disk(setting: Setting) -> str:
    """A disk that is a page larger each time, until all results have room on it."""
    whole = files_in(setting.work / "whole")
    disk = setting.work / "disk"
    disk.mkdir()
    full = pages = 0
    step = 12 if setting.quick else 1
    while True:
        pages += step
        mount(disk, f"size={pages * PAGE}")
        done = setting.run(*BATCH, "-o", "disk/out")
        if done.returncode == 0:
            break
        full += 1
        what = f"a disk of {pages} pages"
        expect(done.returncode in (1, 2), f"{what}: status {done.returncode}")
        expect("No space left" in done.stderr or "journal" in done.stderr, f"{what}: {done.stderr}")
        expect_whole(disk / "out", whole, what)
        subprocess.run(["mount", "-o", "remount,size=64m", disk], check=True)
        again = setting.run(*BATCH, "-o", "disk/out", "--resume")
        expect(again.returncode == 0, f"{what}, resumed with room: {again.stderr}")
        expect_same(disk / "out", whole, f"{what}, resumed with room")
        subprocess.run(["umount", disk], check=True)
    expect_same(disk / "out", whole, "a disk with room")
    subprocess.run(["umount", disk], check=True)
    return f"{full} disks of {step} to {pages - step} pages too small for {len(whole)} files"


def full_for_others(setting: Setting) -> str:
    """Commands that write a few files, on disks of each size until they succeed."""
    disk = setting.work / "disk"
    commands = [
        ("simulate", "--frames", "2", "--width", "64", "--height", "48", "-o", "disk/made"),
        ("calibrate", "--manifest", "stack/stack.csv", "-o", "disk/camera.json"),
        ("view", "night/frame_0001.tiff", "-o", "disk/sheet.png"),
        ("measure", "night", "-o", "disk/table.csv"),
    ]
    full = 0
    for words in commands:
        mount(disk, "size=64m")
        setting.made(*words)
        whole = files_in(disk)
        subprocess.run(["umount", disk], check=True)
        for pages in range(1, 10000, 8 if setting.quick else 1):
            mount(disk, f"size={pages * PAGE}")
            (disk / "filler").write_bytes(b"x" * PAGE)  # so that the first one has no room at all
            done = setting.run(*words)
            (disk / "filler").unlink()
            expect_whole(disk, whole, f"{words[0]} on {pages} pages")
            complete = files_in(disk) == whole
            subprocess.run(["umount", disk], check=True)
            expect((done.returncode == 0) == complete, f"{words[0]}, {pages} pages: {done.stderr}")
            if done.returncode == 0:
                break
            expect("No space left" in done.stderr, f"{words[0]}, {pages} pages: {done.stderr}")
            full += 1
    with open("/dev/full", "w") as sink:
        for words in (("info", "night"), ("measure", "night"), ("compare", "night", "night")):
            done = subprocess.run(
                [setting.tool, *words], cwd=setting.work, stdout=sink, stderr=subprocess.PIPE,
                stdin=subprocess.DEVNULL, text=True, check=False,
            )  # fmt: skip
            expect(done.returncode in (1, 2) and bool(done.stderr), f"{words} into a full device")
    return f"{full} too small for simulate, calibrate, view, measure"


def read_only(setting: Setting) -> str:
    folder = setting.work / "disk"
    mount(folder, "ro")
    for target in ("disk", "disk/out"):
        refused(setting, (*BATCH, "-o", target), (2,), "Read-only")
    refused(setting, ("simulate", "--frames", "2", "-o", "disk/made"), (2,), "cannot be made")
    refused(setting, ("view", "night/frame_0001.tiff", "-o", "disk/sheet.png"), (2,), "Read-only")
    subprocess.run(["umount", folder], check=True)
    return "read-only folders refused"


def vanishing(setting: Setting) -> str:
    """The folder of inputs, or that of results, is renamed away after a few results."""
    whole = files_in(setting.work / "whole")
    named = ""
    for folder in ("night", "out"):
        out = setting.work / "out"
        shutil.rmtree(out, ignore_errors=True)
        batch = subprocess.Popen(
            [setting.tool, *BATCH, "-o", "out"], cwd=setting.work, text=True,
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
        )  # fmt: skip
        while batch.poll() is None and not list(out.glob("*_angle_picture.*")):
            time.sleep(0.001)
        away = setting.work / "away"
        (setting.work / folder).rename(away)
        _, error = batch.communicate(timeout=60)
        # What is being written while its folder goes cannot be removed.
        expect_whole(away if folder == "out" else out, whole, f"{folder}/ vanished", folder == "out")
        # 2 where no frame was whole when the folder went.
        expect(batch.returncode in (1, 2), f"{folder}/ vanished: status {batch.returncode}, {error}")
        lost = error.count("kv-polarize: night/")
        expect(lost > 0, f"{folder}/ vanished: no frame is named: {error}")
        named += f"{folder}/ vanished, {lost} failures told; "
        if folder == "out":
            shutil.rmtree(out, ignore_errors=True)
        away.rename(setting.work / folder)
        setting.made(*BATCH, "-o", "out", "--resume")
        expect_same(out, whole, f"{folder}/ came back")
    return named + "both resumed"


def within(setting: Setting) -> str:
    setting.night(10)
    setting.made("simulate", "--calibration-stack", "--sensor", "1", "--width", "64", "--height", "48",
                 "--bit-depth", "12", "-o", "stack")  # fmt: skip
    setting.made(*BATCH, "-o", "whole")
    figures = [full_disk(setting), full_for_others(setting), read_only(setting), vanishing(setting)]
    return "; ".join(figures)


if __name__ == "__main__":
    place = Setting(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), len(sys.argv) > 3)
    try:
        print(within(place))
    except Failed as failure:
        sys.exit(str(failure))
