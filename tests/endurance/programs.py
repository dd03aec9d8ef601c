# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
"""The cases that are programs of their own, on the library alone."""

import subprocess

from setting import Setting, expect


def _run(setting: Setting, *words: str) -> str:
    done = subprocess.run(
        [setting.program(words[0]), *words[1:]], cwd=setting.work, env=setting.environment(),
        text=True, stdout=subprocess.PIPE, timeout=3600, check=False,
    )  # fmt: skip
    figures = " ".join(done.stdout.split())
    expect(done.returncode == 0, f"status {done.returncode}: {figures}")
    return figures


def transforms(setting: Setting) -> str:
    return _run(setting, "endurance_transforms", "200000" if setting.quick else "10000000")


def lifecycle(setting: Setting) -> str:
    return _run(setting, "endurance_lifecycle", "2000" if setting.quick else "100000")


def loading(setting: Setting) -> str:
    library = setting.build / "kevrinth_qrm_polarization_processor.so"
    return _run(setting, "endurance_loading", str(library), "100" if setting.quick else "1000")
