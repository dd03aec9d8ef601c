#!/usr/bin/env bash
# What is installed: all files and links, and no other.
#
#   files_test.sh PREFIX LIBDIR VERSION CONFIGURATION
set -euo pipefail
prefix=$1 lib=$2 version=$3 configuration=$4
source ../expect_same.sh

name=kevrinth_qrm_polarization_processor
# The number behind .so is that of the binary interface.
expected="bin/kv-polarize
include/kevrinth_qrm_logger.h
include/$name.h
$lib/cmake/$name/$name-config-$configuration.cmake
$lib/cmake/$name/$name-config-version.cmake
$lib/cmake/$name/$name-config.cmake
$lib/kevrinth_qrm_logger.cfg
$lib/kevrinth_qrm_logger.so
$lib/$name.so -> lib$name.so.0
$lib/${name}_vector_avx2.so
$lib/${name}_vector_avx512.so
$lib/lib$name.so -> lib$name.so.0
$lib/lib$name.so.$version
$lib/lib$name.so.0 -> lib$name.so.$version
$lib/pkgconfig/$name.pc"
expect_same 'installed files' "$(LC_ALL=C sort <<<"$expected")" \
  "$(find "$prefix" -type f -printf '%P\n' -o -type l -printf '%P -> %l\n' | LC_ALL=C sort)"

exit "$faults"
