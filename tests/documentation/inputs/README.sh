# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

kv-polarize simulate --width 64 --height 400 -o frame.npy
