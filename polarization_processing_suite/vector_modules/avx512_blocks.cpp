#include "vector_modules/module_blocks.h"
#include "vector_modules/simd512.h"
#include "vector_modules/wide_block_table.h"

namespace kv {

constinit const BlockTable kModuleBlocks = wide_table<Simd512>();

}  // namespace kv
