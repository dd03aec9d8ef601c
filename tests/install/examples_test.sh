#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0
#
# Runs the examples, built against the installed tree, on a simulated frame.
#
#   examples_test.sh FOLDER_OF_EXAMPLES TOOL WORK
set -euo pipefail
examples=$1 tool=$2 work=$3
source "$(dirname "$0")/../expect_same.sh"

rm -rf "$work"
mkdir -p "$work"/{frames,results}
"$tool" simulate -o "$work/frames/scene.npy" --width 320 --height 256 >/dev/null
cp "$work/frames/scene.npy" "$work/frames/again.npy"

expect_same 'one_frame' '320 x 256 pixels, 0 not to be used' \
  "$("$examples/one_frame" "$work/frames/scene.npy" "$work")"
# A float of each pixel behind the header, and two of each pair.
expect_same 'sizes of its results' "$((320 * 256 * 4 + 128)) $((320 * 256 * 4 + 128)) $((320 * 256 * 8 + 128))" \
  "$(stat --printf '%s ' "$work"/{dolp,dolp_sigma,normalized_stokes}.npy | sed 's/ $//')"

expect_same 'folder' '2 of 2 frames' "$("$examples/folder" "$work/frames" "$work/results")"
expect_same 'its results' 'again_angle.png again_azimuth.npy again_dolp.npy scene_angle.png scene_azimuth.npy scene_dolp.npy' \
  "$(cd "$work/results" && LC_ALL=C printf '%s\n' * | paste -sd ' ')"

# The middle of the leftmost film disc: DoLP 0.9 at 0 degrees.
expect_same 'DoLP and angle of a region' 'DoLP  0.9 angle 0 degrees' \
  "$("$examples/region" "$work/frames/scene.npy" 60 222 8 8 |
    sed -nE 's/^DoLP +([0-9.]+) .*/DoLP  \1/p; s/^angle (-?[0-9.]+) .*/angle \1/p' |
    LC_ALL=C awk '/DoLP/ {printf "DoLP  %.1f ", $2} /angle/ {printf "angle %d degrees", ($2 > -1 && $2 < 1) ? 0 : $2}')"

# I0 1000, I45 and I135 600, I90 200: S0 1200, S1 800, S2 0.
expect_same 'mosaic_cell' 'angle 0.0 degrees, DoLP 0.67' "$("$examples/mosaic_cell")"

expect_same 'a fault' 'there is no such file; check the path' \
  "$("$examples/one_frame" "$work/none.npy" "$work" 2>&1 || true)"

exit "$faults"
