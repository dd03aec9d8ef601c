// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <vector>

namespace kv::polarization {

/// Throws Fault of kind argument when the output is one of the inputs, by whatever path.
void check_is_no_input(const std::filesystem::path& output,
                       const std::vector<std::filesystem::path>& inputs);

}  // namespace kv::polarization
