// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "polarization_processor/vector/block_entries.h"
#include "polarization_processor/vector/sse41_form.h"

namespace kv {

extern const BlockEntries kSse41Scheduled;

namespace {

constinit const BlockEntries kOthers = block_entries<Sse41Form, Wanted::others>();

}  // namespace

constinit const BlockTable kSse41Blocks{kSse41Scheduled, kOthers};

}  // namespace kv
