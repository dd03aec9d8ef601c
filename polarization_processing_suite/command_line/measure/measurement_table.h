#pragma once

#include <string>
#include <vector>

#include "command_line/measure/measurement.h"

namespace kv::polarization {

/// An aligned table for people.
std::string table_of(const std::vector<Measurement>& measurements);

}  // namespace kv::polarization
