#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Builds the wheel of a build tree, installs it into a new environment, and runs there the lines of
# the README and of the package's page.
#
#   wheel_test.sh PYTHON SOURCE BUILD TOUR WORK      TOUR: the folder of the README's tour
set -euo pipefail
python=$1 source=$2 build=$3 tour=$4 work=$5

rm -rf "$work"
mkdir -p "$work"
export PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_ROOT_USER_ACTION=ignore PYTHONDONTWRITEBYTECODE=1
unset PYTHONPATH
"$python" -m venv --system-site-packages "$work/venv"
KV_BUILD_TREE=$build "$work/venv/bin/pip" wheel --quiet --no-build-isolation --no-index --no-deps \
  --wheel-dir "$work" "$source"
"$work/venv/bin/pip" install --quiet --no-index "$work"/kv_polarization-*.whl

cd "$tour"
"$work/venv/bin/python" - "$work/venv" <<'PYTHON'
import pathlib
import sys

import kv_polarization as kv

package = pathlib.Path(kv.__file__).parent
assert package.is_relative_to(sys.argv[1]), package
info = kv.build_info()
for name in ("library", "vector_module", "logger"):
    assert info[name] is None or pathlib.Path(info[name]).parent == package, info
assert info["logger"] and (package / "py.typed").exists(), info
PYTHON

for page in README.md docs/python.md; do
  sed -n '/^```python$/,/^```$/{/^```/!p}' "$source/$page" >"$work/page.py"
  [[ -s $work/page.py ]] || {
    echo "$page has no lines in Python" >&2
    exit 1
  }
  "$work/venv/bin/python" "$work/page.py"
done
