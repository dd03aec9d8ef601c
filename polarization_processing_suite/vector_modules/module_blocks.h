#pragma once

#include "polarization_processor/vector/blocks.h"

namespace kv {

/// The blocks of the module that this is linked into.
extern const BlockTable kModuleBlocks;

}  // namespace kv
