#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Runs the commands of the README's tour one after the other, in an empty folder.
#
#   tour_test.sh README TOOL WORK
set -euo pipefail
readme=$1 tool=$2 work=$3

rm -rf "$work"
mkdir -p "$work/bin"
ln -s "$tool" "$work/bin/kv-polarize"
PATH="$work/bin:$PATH"

mapfile -t commands < <(sed -n '/<!-- tour/,/^[^ <]/s/^    \(kv-polarize .*\)/\1/p' "$readme")
[[ ${#commands[@]} -ge 5 ]] || {
  echo "the README has no tour" >&2
  exit 1
}
cd "$work"
for command in "${commands[@]}"; do
  echo "$ $command"
  eval "$command"
done

# What the commands were for is there.
for result in planes/frame_0020_dolp.png planes/frame_0001_angle_picture.png camera.html sheet.png; do
  [[ -s $result ]] || {
    echo "the tour made no $result" >&2
    exit 1
  }
done
