// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

/// What a sensor is, found from frames of known light, and taken off its frames.

#include "kv/calibration/analyser.h"
#include "kv/calibration/calibration.h"
#include "kv/calibration/calibration_check.h"
#include "kv/calibration/calibration_file.h"
#include "kv/calibration/calibration_fit.h"
#include "kv/calibration/fit_plan.h"
#include "kv/calibration/frame_corrector.h"
#include "kv/calibration/identify.h"
#include "kv/calibration/report.h"
