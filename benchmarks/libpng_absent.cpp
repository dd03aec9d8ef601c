// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Takes the place of libpng_baseline.cpp where there is no libpng.
#include "libpng_baseline.h"

namespace libpng_baseline {

bool is_available() { return false; }
void write(const std::filesystem::path&, const kv::polarization::GreyImage&) {}
void read(const std::filesystem::path&, kv::polarization::Frame&) {}

}  // namespace libpng_baseline
