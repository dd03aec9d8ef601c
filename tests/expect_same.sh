# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# For tests to source: reports each difference, and counts on the test to exit with $faults.

faults=0

#   expect_same WHAT EXPECTED FOUND
expect_same() {
  if [[ $2 != "$3" ]]; then
    printf '%s\n--- expected\n%s\n--- found\n%s\n' "$1" "$2" "$3" >&2
    faults=1
  fi
}
