# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""A batch that is killed at random moments and goes on with --resume."""

import random
import shutil
import subprocess
import time

from setting import PARTIAL, Setting, expect, expect_same, expect_whole, files_in

BATCH = ("transform", "night", "--format", "tiff", "--pictures", "angle", "--quiet")


def run(setting: Setting) -> str:
    kills = 12 if setting.quick else 200
    setting.night(40)
    start = time.monotonic()
    setting.made(*BATCH, "-o", "whole")
    seconds = time.monotonic() - start
    whole = files_in(setting.work / "whole")
    moments = random.Random(1)
    out = setting.work / "out"
    killed = ends = left = 0
    while killed < kills:
        batch = subprocess.Popen(
            [setting.tool, *BATCH, "-o", "out", "--resume"], cwd=setting.work,
            stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
        )  # fmt: skip
        time.sleep(moments.uniform(0, 0.3 * seconds))
        batch.kill()
        _, error = batch.communicate()
        if batch.returncode == 0:  # it was done before
            expect_same(out, whole, f"after {killed} kills")
            shutil.rmtree(out)
            ends += 1
            continue
        expect(batch.returncode == -9, f"a resumed run ended by itself: {batch.returncode} {error}")
        killed += 1
        if out.exists():
            left += any(PARTIAL.search(path.name) for path in out.iterdir())
            expect_whole(out, whole, f"after {killed} kills", partials=True)
    setting.made(*BATCH, "-o", "out", "--resume")
    expect_same(out, whole, "after the last run")
    return (
        f"{killed} kills of a batch of 45 frames and {len(whole) - 1} results, {left} of them left "
        f"partial files, {ends + 1} runs came to their end, each with the undisturbed results"
    )
