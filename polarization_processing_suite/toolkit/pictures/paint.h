// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kv/polarization/picture.h"

namespace kv::polarization {

/// In pixels.
struct Box {
  int left;
  int top;
  int width;
  int height;
};

// Grey pictures take a colour's green. What lies outside of the picture is left out.

void fill(Picture& picture, const Box& box, const Colour& colour);

/// Lays a colour over a pixel, of which it covers a share from 0 to 1.
void cover(Picture& picture, int column, int row, const Colour& colour, double coverage);

/// Puts a picture into another one, which has room for it; grey may go into colour.
void paste(const Picture& source, Picture& target, int left, int top);

}  // namespace kv::polarization
