# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

sensor=(--sensor 1 --width 64 --height 48 --bit-depth 12 --phase 90)
kv-polarize simulate --frames 3 "${sensor[@]}" -o night
kv-polarize simulate --calibration-stack "${sensor[@]}" -o stack
kv-polarize calibrate --manifest stack/stack.csv --phase 90 -o camera.json

# A camera that hands over two frames of Mono12p, and somebody who looks at them.
mkdir ../inputs
printf '#!/bin/sh\nhead -c %d /dev/zero\n' $((2 * 2448 * 2048 * 3 / 2)) >../inputs/camera
printf '#!/bin/sh\ntest "$(wc -c)" = %d\n' $((2 * 2448 * 2048 * 2)) >../inputs/viewer
chmod +x ../inputs/*
