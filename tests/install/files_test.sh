#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# What is installed: all files and links, and no other.
#
#   files_test.sh PREFIX LIBDIR VERSION CONFIGURATION TOOLKIT
set -euo pipefail
prefix=$1 lib=$2 version=$3 configuration=$4 toolkit=$5
source ../expect_same.sh

name=kevrinth_qrm_polarization_processor
# The number behind .so is that of the binary interface.
expected="bin/kv-polarize
include/kevrinth_qrm_logger.h
include/$name.h
include/kv/polarization/planes/plane_list.h
$(find "$toolkit"/*/include -type f -printf 'include/%P\n')
$lib/cmake/$name/$name-config-$configuration.cmake
$lib/cmake/$name/$name-config-version.cmake
$lib/cmake/$name/$name-config.cmake
$lib/cmake/kv_polarization/Findlibdeflate.cmake
$lib/cmake/kv_polarization/kv_polarization-config-version.cmake
$lib/cmake/kv_polarization/kv_polarization-config.cmake
$lib/cmake/kv_polarization/kv_polarization-targets-$configuration.cmake
$lib/cmake/kv_polarization/kv_polarization-targets.cmake
$lib/kevrinth_qrm_logger.cfg
$lib/kevrinth_qrm_logger.so
$lib/$name.so -> lib$name.so.0
$lib/${name}_vector_avx2.so
$lib/${name}_vector_avx512.so
$lib/lib$name.so -> lib$name.so.0
$lib/lib$name.so.$version
$lib/lib$name.so.0 -> lib$name.so.$version
$lib/libkv_calibration.a
$lib/libkv_image_files.a
$lib/libkv_pictures.a
$lib/libkv_polarization.a
$lib/pkgconfig/$name.pc
$lib/pkgconfig/kv-calibration.pc
$lib/pkgconfig/kv-image-files.pc
$lib/pkgconfig/kv-pictures.pc
$lib/pkgconfig/kv-polarization.pc
share/bash-completion/completions/kv-polarize
share/fish/vendor_completions.d/kv-polarize.fish
share/man/man1/kv-polarize.1
$("$prefix/bin/kv-polarize" --help |
  sed -n '/^Commands:/,/^$/s|^  \([a-z-]\+\) .*|share/man/man1/kv-polarize-\1.1|p')
share/zsh/site-functions/_kv-polarize"
expect_same 'installed files' "$(LC_ALL=C sort <<<"$expected")" \
  "$(find "$prefix" -type f -printf '%P\n' -o -type l -printf '%P -> %l\n' | LC_ALL=C sort)"

exit "$faults"
