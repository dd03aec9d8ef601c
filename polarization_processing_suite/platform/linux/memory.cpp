// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/memory.h"

#include <sys/mman.h>

namespace kv::platform {

void prefer_huge_pages(void* memory, std::size_t bytes) { madvise(memory, bytes, MADV_HUGEPAGE); }

}  // namespace kv::platform
