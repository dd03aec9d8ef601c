#include "vector_modules/module_blocks.h"
#include "vector_modules/simd256.h"
#include "vector_modules/wide_block_table.h"

namespace kv {

constinit const BlockTable kModuleBlocks = wide_table<Simd256>();

}  // namespace kv
