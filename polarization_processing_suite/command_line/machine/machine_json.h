#pragma once

#include "command_line/json_output.h"
#include "toolkit/machine/machine.h"

namespace kv::polarization {

Json json_of(const Machine& machine);

}  // namespace kv::polarization
