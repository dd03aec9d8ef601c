// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <vector>

#include "kv/polarization/buffer.h"
#include "toolkit/image_files/formats/tiff_page.h"
#include "toolkit/image_files/formats/tiff_stream.h"

namespace kv::polarization {

/// The pages of a file, whatever they hold.
class TiffPages {
 public:
  /// Throws Fault of kind file when the chain of pages is damaged; unsupported when there is none.
  explicit TiffPages(SourcePointer source);

  std::size_t count() const { return places_.size(); }
  std::uint64_t file_size() const { return source_->size(); }

  /// Goes to a page, and reads its fields.
  TiffPage open(std::size_t index);

  /// Throws Fault of kind file when the page at hand cannot hold its pixels.
  void check(const TiffPage& page) { check_parts(stream_.get(), page, source_->size()); }

  /// Reads all pixels of the page at hand, row by row without gaps, in the processor's own order.
  void read(const TiffPage& page, std::uint8_t* to);

 private:
  void find_pages();
  bool lies_in_one_piece(const TiffPage& page) const;
  void read_strips(const TiffPage& page, std::uint8_t* to);
  void read_tiles(const TiffPage& page, std::uint8_t* to);
  [[noreturn]] void fail_as_damaged() const;

  SourcePointer source_;
  TiffStream stream_;
  std::vector<std::uint64_t> places_;  ///< of the pages' directories
  Buffer<std::uint8_t> tile_;
};

}  // namespace kv::polarization
