#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Runs a program with nothing in its environment: it has to find the library, the library its
# companions, all in the one folder, and the logger has to write.
#
#   program_test.sh FOLDER PROGRAM [ARGUMENT...]     ROOT in the environment is the program's root
set -euo pipefail
folder=$1
shift
source "$(dirname "$0")/../expect_same.sh"

# The loader tells which libraries it initialises. KEVRINTH_... asks the logger for durations.
if ! said=$(env -i LD_DEBUG=files KEVRINTH_QRM_LOGGER_LEVEL=7 "$@" 2>&1); then
  printf '%s fails:\n%s\n' "$*" "$(grep -vE '^ +[0-9]+:' <<<"$said")" >&2
  exit 1
fi
grep -q '\[debug\].*transform takes' <<<"$said" || expect_same 'log lines' 'a duration' 'none'

name=kevrinth_qrm_polarization_processor
expected=("$folder"/{lib$name.so,${name}_vector_avx2.so,${name}_vector_avx512.so,kevrinth_qrm_logger.so})
found=()
while read -r library; do
  found+=("${ROOT-}$library")
done < <(sed -n 's/.*calling init: \(.*kevrinth.*\)/\1/p' <<<"$said")
expect_same 'loaded libraries' "$(realpath "${expected[@]}" | sort)" \
  "$(realpath "${found[@]}" | sort)"

exit "$faults"
