#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# A library's binary interface is the one that is on record.
#
#   abi_test.sh ABIDW ABIDIFF LIBRARY RECORD [HEADER]
#
# HEADER is the public one: types of other headers count as private. KV_UPDATE_ABI=1 in the environment
# writes the record.
set -euo pipefail
abidw=$1 abidiff=$2 library=$3 record=$4 header=${5-}

if ! { command -v "$abidw" && command -v "$abidiff"; } >/dev/null; then
  echo 'abidw and abidiff are missing; Debian has them in abigail-tools' >&2
  exit 77
fi

current=$(mktemp)
trap 'rm -f "$current"' EXIT
"$abidw" --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --drop-undefined-syms \
  --exported-interfaces-only --no-parameter-names ${header:+--drop-private-types --header-file "$header"} \
  --out-file "$current" "$library"

if [[ ${KV_UPDATE_ABI-} == 1 ]]; then
  cat "$current" >"$record"
  exit
fi

# Bits: 1 and 2 an error, 4 a change, 8 an incompatible one.
status=0
"$abidiff" "$record" "$current" || status=$?
if ((status & 8)); then
  echo 'Programs that were compiled before would break; docs/abi.md tells what that asks for.' >&2
elif ((status)); then
  echo 'The interface has changed. If it is meant to, scripts/abi --update renews the record.' >&2
fi
exit $((status > 0))
