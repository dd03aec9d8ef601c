// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

namespace kv::polarization {

/// Page numbers from 1 up, such as 1,5..8 or 1,5-8; sorted, each once. Throws BadValue.
std::vector<std::size_t> page_list_of(const std::string& text);

/// The shortest text that gives those pages.
std::string page_list_text(const std::vector<std::size_t>& pages);

}  // namespace kv::polarization
