// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Compiled programs hold these numbers and sizes. A line that does not compile is a break.

#include "polarization_processor/kevrinth_qrm_polarization_processor.h"

static_assert(sizeof(ProcessorStatus) == 4 && sizeof(PolarPhase) == 4);

static_assert(kv_status_ok == 0);
static_assert(kv_status_general_failure == 1);
static_assert(kv_status_not_initialized == 2);
static_assert(kv_status_out_of_memory == 3);
static_assert(kv_status_null_handle == 4);
static_assert(kv_status_null_input == 5);
static_assert(kv_status_no_outputs == 6);
static_assert(kv_status_input_aliases_output == 7);
static_assert(kv_status_outputs_alias == 8);
static_assert(kv_status_invalid_polar_phase == 9);
static_assert(kv_status_zero_output_max == 10);
static_assert(kv_status_invalid_width == 11);
static_assert(kv_status_invalid_height == 12);
static_assert(kv_status_invalid_bit_depth == 13);

static_assert(kv_polar_phase_0 == 0);
static_assert(kv_polar_phase_45 == 1);
static_assert(kv_polar_phase_90 == 2);
static_assert(kv_polar_phase_135 == 3);
