#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

/// Images of kinds that the toolkit itself never writes, 8 x 6 pixels.

void write_png_of_kind(const std::filesystem::path& path, int color_type, int bits,
                       bool interlaced = false);

struct TiffKind {
  int channels = 1;
  int bits = 16;
  int sample_format = 1;
  int photometric = 1;
  int compression = 1;
  bool tiled = false;
  bool big_endian = false;
};

/// Every page is of that kind; its samples are 256 * page + 0, 1, 2 and so on.
void write_tiff_pages(const std::filesystem::path& path, const std::vector<TiffKind>& pages);
