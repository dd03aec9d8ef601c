// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

namespace kv::platform {

/// Asks the operating system to back memory by huge pages, where it leaves that to programs.
/// Without effect where it does not, or has none.
void prefer_huge_pages(void* memory, std::size_t bytes);

/// Copies as memcpy does, but leaves the caches to others: for results that are larger than them.
/// The thread calls finish_copies() before it tells another one of them.
void copy_past_caches(void* to, const void* from, std::size_t bytes);
void finish_copies();

}  // namespace kv::platform
