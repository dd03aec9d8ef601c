// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/memory.h"

namespace kv::platform {

void prefer_huge_pages(void*, std::size_t) {}  // huge pages need a privilege there

}  // namespace kv::platform
