// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace kv::polarization {

/// Whether a name stands before another one where numbers are ordered by their values: frame_2
/// before frame_10. A strict order of all names, so that a sort never depends on their first order.
bool naturally_before(std::string_view first, std::string_view second);

}  // namespace kv::polarization
