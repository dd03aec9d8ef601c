#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Builds the wheel of a build tree, installs it into a new environment, and runs with it the examples
# of the README and of the package's page.
#
#   wheel_test.sh PYTHON SOURCE BUILD PREFIX LIBDIR WORK      PREFIX: of an installed tree
set -euo pipefail
python=$1 source=$2 build=$3 prefix=$4 libdir=$4/$5 work=$6

rm -rf "$work"
mkdir -p "$work"
export PIP_DISABLE_PIP_VERSION_CHECK=1 PIP_ROOT_USER_ACTION=ignore PYTHONDONTWRITEBYTECODE=1
unset PYTHONPATH
"$python" -m venv --system-site-packages "$work/venv"
KV_BUILD_TREE=$build "$work/venv/bin/pip" wheel --quiet --no-build-isolation --no-index --no-deps \
  --wheel-dir "$work" "$source"
"$work/venv/bin/pip" install --quiet --no-index "$work"/kv_polarization-*.whl

cd "$work"
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

for page in README docs/python; do
  "$python" "$source/tests/documentation/examples_test.py" "$source/$page.md" --prefix "$prefix" \
    --libdir "$libdir" --python "$work/venv/bin/python" --work "$work/${page##*/}" \
    --inputs "$source/tests/documentation/inputs/${page##*/}.sh"
done
