// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// The whole of the toolkit's basis: frames and planes in anybody's memory, and the processor.

#include "kv/polarization/buffer.h"
#include "kv/polarization/fault.h"
#include "kv/polarization/frame.h"
#include "kv/polarization/maps.h"
#include "kv/polarization/mean_plane.h"
#include "kv/polarization/mosaic.h"
#include "kv/polarization/noise.h"
#include "kv/polarization/planes.h"
#include "kv/polarization/processor.h"
#include "kv/polarization/quality.h"
#include "kv/polarization/region.h"
#include "kv/polarization/weights.h"
