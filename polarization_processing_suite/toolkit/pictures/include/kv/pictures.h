// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Pictures of polarization, in memory.

#include "kv/pictures/angle_ticks.h"
#include "kv/pictures/colours.h"
#include "kv/pictures/contact_sheet.h"
#include "kv/pictures/flags_picture.h"
#include "kv/pictures/legend.h"
#include "kv/pictures/picture_kinds.h"
#include "kv/pictures/picture_maps.h"
#include "kv/pictures/pictures.h"
#include "kv/pictures/ranges.h"
