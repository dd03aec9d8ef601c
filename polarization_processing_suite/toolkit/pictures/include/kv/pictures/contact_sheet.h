// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kv/pictures/legend.h"

namespace kv::polarization {

/// How pictures lie on a sheet.
struct SheetLayout {
  std::string title{};  ///< above all pictures; ASCII, empty for none
  int reduction = 0;  ///< sides of the blocks that become a pixel; 0 for sides of up to 640 pixels
  int enlargement = 1;  ///< sides of what a pixel becomes
};

/// The layout with which a sheet of pictures of that size is as wide as can be, up to that number
/// of pixels: reduced where they must be, else enlarged. Legends and titles alone may make it
/// wider.
SheetLayout layout_within(int sheet_width, int picture_width, int picture_height);

/// Pictures of a frame side by side, three in a row, each under its title and beside its legend.
class ContactSheet {
 public:
  /// An empty sheet.
  explicit ContactSheet(SheetLayout layout = {}) : layout_(std::move(layout)) {}

  /// Keeps a copy of the picture, reduced by the means of blocks, or enlarged. The picture has no
  /// legend of its own.
  void add(const Picture& picture, const Legend& legend);

  /// The sheet of those added so far. Colour. Throws Fault of kind argument when there are none.
  Picture picture() const;

 private:
  struct Entry {
    std::string title;
    Picture picture;
  };
  SheetLayout layout_;
  std::vector<Entry> entries_;
};

}  // namespace kv::polarization
