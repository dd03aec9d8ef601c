# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""Clocks that go back by an hour at every 16th reading while a batch runs."""

import json
import os
import pty
import re
import subprocess

from setting import Setting, expect, expect_same, files_in

BATCH = ("transform", "night", "--format", "npy", "--pictures", "angle")
NEGATIVE = re.compile(r"(?<![\w./:-])-[0-9]")


def run(setting: Setting) -> str:
    frames = 20 if setting.quick else 400
    setting.night(frames)
    setting.made(*BATCH, "-o", "whole")
    whole = files_in(setting.work / "whole")
    backward = {"LD_PRELOAD": setting.program("endurance_backward_clock.so")}

    told = setting.run(*BATCH, "-o", "out", "--log", "7", **backward)
    expect(told.returncode == 0, told.stderr)
    expect_same(setting.work / "out", whole, "with clocks that go back")
    durations = told.stderr.count(" microseconds")
    expect(durations > 0, "the log has no durations")
    figures = json.loads(setting.run(*BATCH, "-o", "out", "--overwrite", "--json", **backward).stdout)
    expect(min(value for value in figures.values()) >= 0, f"a negative figure: {figures}")
    bench = setting.run("bench", "--width", "64", "--height", "48", "--seconds", "0.1", **backward)
    expect(bench.returncode in (0, 1, 2), f"bench: {bench.returncode}")
    progress = on_terminal(setting, [setting.tool, *BATCH, "-o", "out", "--overwrite"], backward)
    expect_same(setting.work / "out", whole, "on a terminal")
    for name, text in {
        "transform": told.stdout + told.stderr, "bench": bench.stdout + bench.stderr, "progress": progress
    }.items():  # fmt: skip
        lines = [line for line in re.split("[\r\n]", text) if NEGATIVE.search(line)]
        expect(not lines, f"{name} tells a negative figure: {lines[:1]}")
    drawn = progress.count(" frames") - 1
    expect(drawn >= 2, f"progress was drawn {drawn} times")
    return (
        f"{frames + 5} frames with the undisturbed results, {durations} durations logged, "
        f"progress drawn {drawn} times, no negative figure"
    )


def on_terminal(setting: Setting, words: list[str], more: dict[str, str]) -> str:
    """What a command shows on a terminal."""
    ours, theirs = pty.openpty()
    process = subprocess.Popen(
        words, cwd=setting.work, env=setting.environment(TERM="xterm", COLUMNS="100", **more),
        stdin=subprocess.DEVNULL, stdout=theirs, stderr=theirs,
    )  # fmt: skip
    os.close(theirs)
    shown = b""
    while True:
        try:
            piece = os.read(ours, 65536)
        except OSError:  # the terminal's other end is closed
            break
        if not piece:
            break
        shown += piece
    os.close(ours)
    expect(process.wait(60) == 0, f"on a terminal: status {process.returncode}")
    return shown.decode()
