"""The examples, each as its own program in an empty folder."""

import pathlib
import re
import subprocess
import sys

import kv_polarization as kv

EXAMPLES = pathlib.Path(__file__).parents[2] / "examples" / "python"


def run(folder, name, *arguments):
    done = subprocess.run(
        [sys.executable, EXAMPLES / name, *arguments],
        cwd=folder, capture_output=True, text=True, timeout=120,
    )  # fmt: skip
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def test_one_frame(tmp_path):
    said = run(tmp_path, "one_frame.py")
    assert "DoLP 0.700, angle 30.0 degrees" in said  # as its film is made
    assert kv.read(tmp_path / "dolp.png").shape == (200, 320)


def test_calibrate_and_compare(tmp_path):
    said = run(tmp_path, "calibrate.py")
    before, after = (
        [float(number) for number in re.findall(r"\d+\.\d+", line)]
        for line in said.splitlines()[-2:]
    )
    assert abs(after[0] - 0.6) < 1e-3 and abs(after[2] - 20) < 0.05  # as its film is made
    assert abs(before[0] - 0.6) > 0.01 and after[3] < 0.7 * before[3]
    assert "!" not in said and (tmp_path / "camera.html").stat().st_size > 10000
