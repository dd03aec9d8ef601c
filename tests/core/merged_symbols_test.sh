#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Files compiled for a higher instruction set define nothing that a linker merges with the same
# thing of another file: the plain processor could then get the code of the higher set.
#
#   merged_symbols_test.sh OBJECT...     those named after such a set are looked at
set -euo pipefail

seen=0 faults=0
for object in "$@"; do
  [[ ${object##*/} == @(sse41|avx2|avx512)?(_scheduled)_blocks.cpp.* ]] || continue
  seen=$((seen + 1))
  if nm --demangle --defined-only "$object" | grep -E '^[0-9a-f]+ [WVu] '; then
    echo "these symbols of $object are merged" >&2
    faults=1
  fi
done
if [[ $seen -ne 5 ]]; then
  echo "$seen files compiled for a higher instruction set, in the place of 5" >&2
  exit 1
fi
exit $faults
