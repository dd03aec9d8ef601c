// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace kv::platform {

/// Columns of the terminal that standard output goes to; 0 when it goes elsewhere.
int output_columns();

}  // namespace kv::platform
