// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>

namespace kv::polarization {

/// A name for a file that is to become the target, in its folder, as a rename is atomic only there.
/// No other process picks it.
std::filesystem::path partial_beside(const std::filesystem::path& target);

/// Whether a file name is one that partial_beside makes.
bool is_partial(const std::filesystem::path& name);

}  // namespace kv::polarization
