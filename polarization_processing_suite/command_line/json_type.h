// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json_fwd.hpp>

namespace kv::polarization {

/// Members in the order in which they were set. Those who make or read some include json_output.h.
using Json = nlohmann::ordered_json;

}  // namespace kv::polarization
