// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "toolkit/api/maps/cell_chunk.h"

namespace kv::polarization {

// Formulas of the maps over a chunk's pixels: loops without branches, which compilers turn into
// vectors. They read and write what the chunk holds or points to.

void find_contrasts(CellChunk& chunk);  ///< S0, a, b
void find_s1(const RotationLines& rotation, CellChunk& chunk);
void find_s2(const RotationLines& rotation, CellChunk& chunk);
void find_dolp(CellChunk& chunk);

void find_moments(CellChunk& chunk);  ///< of four independent samples a pixel
void find_vector_variance(CellChunk& chunk);

// Into `result`.
void find_angle(CellChunk& chunk);
void find_debiased_dolp(CellChunk& chunk);
void find_s0_sigma(CellChunk& chunk);
void find_s1_sigma(const RotationLines& rotation, CellChunk& chunk);
void find_s2_sigma(const RotationLines& rotation, CellChunk& chunk);
void find_dolp_sigma(CellChunk& chunk);
void find_angle_sigma(CellChunk& chunk);

// Into `flags`, beside what is there.
void flag_values(CellChunk& chunk);  ///< dark and dolp_above_1
void flag_noise(CellChunk& chunk);   ///< below_noise

}  // namespace kv::polarization
