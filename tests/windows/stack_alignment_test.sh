#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# No move of a module faults on a stack that is aligned to 16 bytes only. Whether one would is a
# matter of the caller's stack, so that running the module proves little.
#
#   stack_alignment_test.sh OBJDUMP MODULE
set -euo pipefail
aligned_moves=$("$1" -d --no-show-raw-insn "$2" | grep -E 'vmov(ap|dqa).*%[yz]mm' | grep -F '(' || true)
[[ -z $aligned_moves ]] || {
  printf 'moves that ask for aligned memory, the first ones\n%s\n' "$(head -n 5 <<<"$aligned_moves")" >&2
  exit 1
}
