# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# The Python package, over the library of its package: planes equal to the tool's.
set -euo pipefail
cd /test/tour
kv-polarize transform night/frame_0001.tiff --format npy -o tool >/dev/null

python3 - <<'PYTHON'
import importlib.metadata
import pathlib

import numpy as np

import kv_polarization as kv

package = pathlib.Path(kv.__file__).parent
assert package == pathlib.Path("/usr/lib/python3/dist-packages/kv_polarization"), package
assert importlib.metadata.version("kv_polarization") == kv.__version__
assert list((package / "__pycache__").glob("__init__.*.pyc")), "its modules are not compiled"
assert not list(package.glob("*kevrinth*")), "it carries copies of the libraries"
info = kv.build_info()
folder = pathlib.Path(info["library"]).resolve().parent
assert folder.parent == pathlib.Path("/usr/lib"), info
assert pathlib.Path(info["logger"]).resolve().parent.parent == folder, info

frame = kv.read("night/frame_0001.tiff")
names = ("intensity", "stokes_s1", "stokes_s2", "azimuth", "dolp")
planes = kv.Processor(bit_depth=12).transform(frame, names)
for name in names:
    expected = np.load(f"tool/frame_0001_{name}.npy")
    assert expected.any() and np.array_equal(getattr(planes, name), expected), name
PYTHON
