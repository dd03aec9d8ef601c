# SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
# SPDX-License-Identifier: Apache-2.0

python3 -c '
import numpy as np, zarr
frames = np.random.default_rng(3).integers(0, 4096, (16, 24, 40), np.uint16)
zarr.save_array("night.zarr", frames, chunks=(1, 24, 40))'
