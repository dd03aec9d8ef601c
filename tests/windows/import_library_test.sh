#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# An import library offers what its library exports on ELF platforms.
#
#   import_library_test.sh NM IMPORT_LIBRARY EXPORT_MAP
set -euo pipefail
diff <(sed -n '/global:/,/local:/ s/^ *\([a-z0-9_]*\);$/\1/p' "$3" | LC_ALL=C sort) \
  <("$1" --defined-only "$2" | awk '$2 == "T" { print $3 }' | LC_ALL=C sort)
