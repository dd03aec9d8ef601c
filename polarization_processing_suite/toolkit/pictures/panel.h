// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

#include "kv/pictures/legend.h"

namespace kv::polarization {

inline constexpr Colour kPanelColour = {32, 32, 32};
inline constexpr Colour kTextColour = {230, 230, 230};

/// Signs of a line, and dots from the panel's edges to its contents.
inline constexpr int kLineSigns = 17;
inline constexpr int kMargin = 8;

/// Rows of a picture for each pixel of a dot, so that its texts stay legible at the size of a
/// screen.
inline constexpr int kRowsOfDot = 480;

/// In dots.
inline constexpr int kPanelWidth = 118;

/// Height in dots that a legend's panel needs.
int panel_height(const Legend& legend);

/// Draws the panel from column `left` to the right edge, with dots of scale x scale pixels.
void draw_panel(Picture& picture, int left, int scale, const Legend& legend);

/// A text as lines of up to that many signs, broken at blanks where there are any.
std::vector<std::string> wrapped(std::string_view text, int signs);

/// Of three significant digits at most.
std::string short_number(double value);

}  // namespace kv::polarization
