# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Builds the examples that the package brings, with its CMake package and with its pkg-config files.
set -euo pipefail
source /test/tests/expect_same.sh
mkdir -p /test/build
cd /test/build

examples=/usr/share/doc/libkevrinth-qrm-polarization-processor-dev/examples
cmake -S $examples -B cmake >cmake.log && cmake --build cmake >>cmake.log || { cat cmake.log; exit 1; }
/test/tests/install/examples_test.sh /test/build/cmake kv-polarize /test/build/work

# The flags are lists of words.
# shellcheck disable=SC2046
cc $examples/mosaic_cell.c $(pkg-config --cflags --libs kevrinth_qrm_polarization_processor) -o mosaic_cell
expect_same 'program in C, by pkg-config' 'angle 0.0 degrees, DoLP 0.67' "$(./mosaic_cell)"
expect_same 'library that it asks for' libkevrinth_qrm_polarization_processor.so.0 \
  "$(readelf -d mosaic_cell | sed -n 's/.*NEEDED.*\[\(.*kevrinth.*\)\]/\1/p')"

# shellcheck disable=SC2046
c++ -std=c++20 $examples/folder.cpp $(pkg-config --cflags --libs kv-image-files kv-pictures) -o folder
expect_same 'program in C++, by pkg-config' '2 of 2 frames' "$(./folder work/frames work/results)"

exit "$faults"
