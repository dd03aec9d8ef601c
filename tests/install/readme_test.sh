#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Builds the C++ program of the README with pkg-config, and runs it.
#
#   readme_test.sh README PREFIX LIBDIR WORK COMPILER [FLAG...]
set -euo pipefail
readme=$1 prefix=$2 libdir=$3 work=$4
shift 4
source "$(dirname "$0")/../expect_same.sh"

rm -rf "$work"
mkdir -p "$work"
sed -n '/^```cpp$/,/^```$/{/^```/!p}' "$readme" >"$work/example.cpp"
export PKG_CONFIG_PATH=$libdir/pkgconfig
read -ra flags < <(pkg-config --cflags --libs kv-image-files)
"$@" -std=c++20 -Wall -Wextra -Werror "$work/example.cpp" "${flags[@]}" -o "$work/example"

cd "$work"
"$prefix/bin/kv-polarize" simulate -o frame.npy --width 64 --height 400 >/dev/null
LD_LIBRARY_PATH=$libdir ./example
expect_same 'size of its map' "$((64 * 400 * 4 + 128))" "$(stat --format %s dolp_sigma.npy)"

exit "$faults"
