// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/pictures/contact_sheet.h"

#include <algorithm>
#include <cstdint>

#include "kv/polarization/fault.h"
#include "toolkit/pictures/glyphs.h"
#include "toolkit/pictures/paint.h"
#include "toolkit/pictures/panel.h"

namespace kv::polarization {
namespace {

constexpr int kColumns = 3;
constexpr int kLongestSide = 640;

// In pixels.
constexpr int kSpace = 12;
constexpr int kWidthForLargeTitles = 500;
constexpr int kHeadingScale = 2;

constexpr Colour kSheetColour = {16, 16, 16};

Picture reduced(const Picture& picture, int block) {
  if (block == 1) return picture;
  Picture result(std::max(1, picture.width / block), std::max(1, picture.height / block),
                 picture.channels);
  const auto channels = static_cast<std::size_t>(picture.channels);
  std::vector<unsigned> sums(result.row_size());
  for (int row = 0; row < result.height; ++row) {
    const int rows = std::min(block, picture.height - row * block);
    const int columns = std::min(block, picture.width);
    std::fill(sums.begin(), sums.end(), 0u);
    for (int i = 0; i < rows; ++i) {
      const std::uint8_t* from =
          &picture.bytes[static_cast<std::size_t>(row * block + i) * picture.row_size()];
      for (std::size_t place = 0; place < sums.size(); place += channels) {
        for (int j = 0; j < columns; ++j) {
          for (std::size_t k = 0; k < channels; ++k) sums[place + k] += *from++;
        }
      }
    }
    const auto count = static_cast<unsigned>(rows * columns);
    std::transform(sums.begin(), sums.end(), result.pixel(0, row), [count](unsigned sum) {
      return static_cast<std::uint8_t>((sum + count / 2) / count);
    });
  }
  return result;
}

Picture enlarged(const Picture& picture, int factor) {
  if (factor == 1) return picture;
  Picture result(picture.width * factor, picture.height * factor, picture.channels);
  const auto channels = static_cast<std::size_t>(picture.channels);
  for (int row = 0; row < result.height; ++row) {
    const std::uint8_t* from =
        &picture.bytes[static_cast<std::size_t>(row / factor) * picture.row_size()];
    std::uint8_t* to = result.pixel(0, row);
    for (int column = 0; column < picture.width; ++column, from += channels) {
      for (int i = 0; i < factor; ++i) to = std::copy_n(from, channels, to);
    }
  }
  return result;
}

/// Of a sheet's picture of that size beside its legend, and the space between two.
std::int64_t column_width_of(std::int64_t width, std::int64_t height) {
  return width + kPanelWidth * std::max<std::int64_t>(1, height / kRowsOfDot) + kSpace;
}

}  // namespace

SheetLayout layout_within(int sheet_width, int picture_width, int picture_height) {
  // One without pixels would fit at any enlargement.
  const std::int64_t wide = std::max(1, picture_width);
  const std::int64_t high = std::max(1, picture_height);
  const auto fits = [sheet_width](std::int64_t width, std::int64_t height) {
    return kColumns * column_width_of(width, height) + kSpace <= sheet_width;
  };
  SheetLayout layout{.reduction = 1};
  while (layout.reduction < wide && !fits(wide / layout.reduction, high / layout.reduction)) {
    ++layout.reduction;
  }
  while (layout.reduction == 1 &&
         fits(wide * (layout.enlargement + 1), high * (layout.enlargement + 1))) {
    ++layout.enlargement;
  }
  return layout;
}

void ContactSheet::add(const Picture& picture, const Legend& legend) {
  const int usual = (std::max(picture.width, picture.height) + kLongestSide - 1) / kLongestSide;
  Picture body = enlarged(reduced(picture, layout_.reduction == 0 ? usual : layout_.reduction),
                          layout_.enlargement);
  Picture colour(body.width, body.height, 3);
  paste(body, colour, 0, 0);
  Legend untitled = legend;
  untitled.title.clear();
  entries_.push_back({legend.title, with_legend(std::move(colour), untitled)});
}

Picture ContactSheet::picture() const {
  if (entries_.empty()) {
    throw Fault(FaultKind::argument, "a contact sheet has no pictures; add one at least");
  }
  Box largest{};
  for (const Entry& entry : entries_) {
    largest.width = std::max(largest.width, entry.picture.width);
    largest.height = std::max(largest.height, entry.picture.height);
  }
  int title_width = 0;
  for (const Entry& entry : entries_) {
    title_width = std::max(title_width, text_width(entry.title, 1));
  }
  const bool has_room = largest.width >= std::max(kWidthForLargeTitles, 2 * title_width);
  const int scale = has_room ? 2 : 1;
  largest.width = std::max(largest.width, scale * title_width);
  const int title_height = (kGlyphHeight + 3) * scale;
  const int column_width = largest.width + kSpace;
  const int row_height = title_height + largest.height + kSpace;
  const int count = static_cast<int>(entries_.size());
  const int columns = std::min(count, kColumns);
  const int heading_height = layout_.title.empty() ? 0 : kGlyphHeight * kHeadingScale + kSpace;
  Picture sheet(columns * column_width + kSpace,
                heading_height + (count + columns - 1) / columns * row_height + kSpace, 3);
  fill(sheet, {0, 0, sheet.width, sheet.height}, kSheetColour);
  draw_text(sheet, layout_.title, kSpace, kSpace, kHeadingScale, kTextColour);
  for (int i = 0; i < count; ++i) {
    const Entry& entry = entries_[static_cast<std::size_t>(i)];
    const int left = kSpace + i % columns * column_width;
    const int top = kSpace + heading_height + i / columns * row_height;
    draw_text(sheet, entry.title, left, top, scale, kTextColour);
    paste(entry.picture, sheet, left, top + title_height);
  }
  return sheet;
}

}  // namespace kv::polarization
