# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

sensor=(--sensor 1 --width 64 --height 48 --bit-depth 12)
kv-polarize simulate --calibration-stack "${sensor[@]}" -o stack
kv-polarize simulate --frames 3 "${sensor[@]}" -o night
# Light of a film at 0 degrees, and at 45.
cp stack/polarized_000.tiff before.tiff
cp stack/polarized_045.tiff after.tiff
