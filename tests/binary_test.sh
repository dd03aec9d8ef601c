#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# What a library's file shows to the world: its exports, how it is loaded and unloaded, and no folder
# of the machine that built it.
#
#   binary_test.sh LIBRARY SOURCE_FOLDER BUILD_FOLDER EXPORT...
set -euo pipefail
library=$1 source_folder=$2 build_folder=$3
shift 3
source "$(dirname "$0")/expect_same.sh"

expect_same 'exported symbols' "$(printf '%s\n' "$@" | LC_ALL=C sort)" \
  "$(nm -D --defined-only "$library" | awk '{ print $3 }' | LC_ALL=C sort)"

# One of these would keep the library in the process for good.
expect_same 'unique symbols' '' "$(readelf -W --dyn-syms "$library" | grep -w UNIQUE || true)"

# Companions are found beside the library, those of the installed one in their own folder too, and
# nowhere else.
run_path="\$ORIGIN" name=$(basename "$library")
if [[ $name =~ ^lib(.*)\.so\.([0-9]+) ]]; then
  run_path+=":\$ORIGIN/${BASH_REMATCH[1]}-${BASH_REMATCH[2]}"
fi
expect_same 'run path' "[$run_path]" \
  "$(readelf -W -d "$library" | awk '$2 ~ /RUNPATH|RPATH/ { print $NF }')"

# Debugging information names the folder of the compilation.
if ! readelf -W -S "$library" | grep '\.debug_info' >/dev/null; then
  for folder in "$source_folder" "$build_folder"; do
    expect_same 'folders of the build machine' '' "$(strings -a "$library" | grep -F "$folder" || true)"
  done
fi

exit "$faults"
