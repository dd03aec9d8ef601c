#pragma once

namespace kv::platform {

/// Columns of the terminal that standard output goes to; 0 when it goes elsewhere.
int output_columns();

}  // namespace kv::platform
