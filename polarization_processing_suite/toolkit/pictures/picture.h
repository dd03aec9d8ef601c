#ifndef KV_TOOLKIT_PICTURES_PICTURE_H
#define KV_TOOLKIT_PICTURES_PICTURE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kv {

using Color = std::array<std::uint8_t, 3>;  ///< red, green, blue as displays take them

/// An image to look at.
struct Picture {
  Picture(int picture_width, int picture_height)
      : width(picture_width),
        height(picture_height),
        rgb(3 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

  std::uint8_t* pixel(int column, int row) {
    return &rgb[3 * (static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                     static_cast<std::size_t>(column))];
  }

  int width;
  int height;
  std::vector<std::uint8_t> rgb;  ///< three bytes a pixel, row by row
};

}  // namespace kv

#endif
