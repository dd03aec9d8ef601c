#pragma once

#include <string>
#include <vector>

#include "kv/pictures/legend.h"

namespace kv::polarization {

/// Pictures of a frame side by side, three in a row, each under its title and beside its legend.
class ContactSheet {
 public:
  /// Keeps a copy of the picture that is reduced by a whole number, to sides of up to 640 pixels,
  /// by the means of blocks. The picture has no legend of its own.
  void add(const Picture& picture, const Legend& legend);

  /// The sheet of those added so far. Colour. Throws Fault of kind argument when there are none.
  Picture picture() const;

 private:
  struct Entry {
    std::string title;
    Picture picture;
  };
  std::vector<Entry> entries_;
};

}  // namespace kv::polarization
