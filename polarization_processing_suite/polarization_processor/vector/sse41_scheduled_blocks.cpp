// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/vector/block_entries.h"
#include "polarization_processor/vector/sse41_form.h"

namespace kv {

extern const BlockEntries kSse41Scheduled;
constinit const BlockEntries kSse41Scheduled = block_entries<Sse41Form, Wanted::scheduled>();

}  // namespace kv
