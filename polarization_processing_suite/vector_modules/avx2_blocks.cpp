#include "vector_modules/module_blocks.h"
#include "vector_modules/module_form.h"
#include "vector_modules/simd256.h"

namespace kv {

constinit const BlockTable kModuleBlocks = block_table<ModuleForm<Simd256>>();

}  // namespace kv
