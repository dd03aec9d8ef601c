# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

# As in the tour of the README.
sensor=(--sensor 1 --width 640 --height 512 --bit-depth 12)
kv-polarize simulate --frames 1 "${sensor[@]}" -o night
kv-polarize simulate --calibration-stack "${sensor[@]}" -o stack
