# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

kv-polarize simulate --frames 2 --format png --width 64 --height 48 -o night
printf 'level = 7\nfile = transforms.log\n' >durations.cfg
