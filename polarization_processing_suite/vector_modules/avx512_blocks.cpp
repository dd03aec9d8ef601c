#include "vector_modules/module_blocks.h"
#include "vector_modules/module_form.h"
#include "vector_modules/simd512.h"

namespace kv {

constinit const BlockTable kModuleBlocks = block_table<ModuleForm<Simd512>>();

}  // namespace kv
