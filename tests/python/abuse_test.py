# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

"""Wrong use never ends the process: random arguments, in a process of their own."""

import pathlib
import subprocess
import sys


def test_wrong_use_never_crashes():
    child = pathlib.Path(__file__).with_name("abuse_child.py")
    done = subprocess.run([sys.executable, child], capture_output=True, text=True, timeout=500)
    assert done.returncode == 0, done.stdout + done.stderr
    assert "calls that worked" in done.stdout
