#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# What a file of the Windows build shows to the world: its exports, the libraries that it asks for,
# what hardens it, and no folder of the machine that built it.
#
#   binary_test.sh OBJDUMP FILE EXPORT_MAP IMPORTS FOLDER...
#
# EXPORT_MAP is that of the same library on ELF platforms, empty for a program.
set -euo pipefail
objdump=$1 file=$2 export_map=$3 imports=$4
shift 4
source "$(dirname "$0")/../expect_same.sh"

sorted() { LC_ALL=C sort -f -u; }

headers=$("$objdump" -p "$file")

wanted=
if [[ -n $export_map ]]; then
  wanted=$(sed -n '/global:/,/local:/ s/^ *\([a-z0-9_]*\);$/\1/p' "$export_map" | sorted)
fi
expect_same 'exported symbols' "$wanted" \
  "$(sed -n '/Name Pointer\] Table/,/^$/ s/^\t\[.*\] //p' <<<"$headers" | sorted)"

expect_same 'imported libraries' "$(tr ' ' '\n' <<<"$imports" | sorted)" \
  "$(sed -n 's/^\tDLL Name: //p' <<<"$headers" | sorted)"

# Addresses that nobody can guess, and no data that can be run.
for mark in DYNAMIC_BASE HIGH_ENTROPY_VA NX_COMPAT; do
  expect_same 'marks of the file' "$mark" "$(grep -ow "$mark" <<<"$headers" || true)"
done
expect_same 'code that can be written' '' \
  "$("$objdump" -h "$file" | grep -w CODE | grep -vw READONLY || true)"

for folder in "$@"; do
  # As the beginning of a path: the runtime's libraries were built in folders of their own.
  expect_same 'folders of the build machine' '' \
    "$(strings -a "$file" | grep -E "(^|[^[:alnum:]._-])$folder(/|\$)" || true)"
done

exit "$faults"
