#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# An instruction stands in a binary at least so many times.
#
#   instruction_test.sh OBJDUMP BINARY INSTRUCTION LEAST
set -euo pipefail

found=$("$1" -d --no-show-raw-insn "$2" | grep -cw "$3" || true)
echo "$found times $3, at least $4 are expected"
[[ $found -ge $4 ]]
