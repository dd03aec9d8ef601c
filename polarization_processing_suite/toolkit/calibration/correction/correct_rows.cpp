// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/calibration/correction/correct_rows.h"

#include <algorithm>
#include <array>

#include "toolkit/calibration/correction/special_cells.h"

namespace kv::polarization {
namespace {

using BlockRow = std::array<std::uint16_t, kBlockColumns>;

/// The two rows of a row of cells, from above; the second one may lie above the first.
template <class Pointer>
struct RowPair {
  Pointer upper;
  Pointer lower;
};

/// A frame's last columns that do not fill a block, and the mirrored one beside an odd width.
void load_end(const std::uint16_t* row, int width, int begin, BlockRow& samples) {
  samples.fill(0);
  std::copy(row + begin, row + width, samples.data());
  if (width % 2 != 0) samples[static_cast<std::size_t>(width - begin)] = row[width - 2];
}

class RowCorrector {
 public:
  RowCorrector(const FramePart& frame, const CorrectionTable& table, const RowSettings& settings,
               const CorrectedRows& corrected, int row)
      : frame_(frame), table_(table), settings_(settings), row_(row) {
    const int second = second_of_cell(row, frame.height);
    has_lower_ = second > 2 * row;
    source_ = {frame.samples + pixel_count(frame.width, 2 * row),
               frame.samples + pixel_count(frame.width, second)};
    const auto place = [&](auto* rows, auto& pair) {
      if (rows == nullptr) return;
      pair.upper = rows + pixel_count(frame.width, 2 * row);
      pair.lower = has_lower_ ? pair.upper + frame.width : nullptr;
    };
    place(corrected.samples, corrected_);
    place(corrected.flags, flags_);
  }

  void correct() {
    for (auto* flags : {flags_.upper, flags_.lower}) {
      if (flags != nullptr) std::fill_n(flags, frame_.width, std::uint8_t{0});
    }
    special_ = table_.special_cells(row_);
    for (int index = 0; index < table_.blocks(); ++index) correct_columns(index);
  }

 private:
  void correct_columns(int index) {
    const int begin = index * kBlockColumns;
    const int count = std::min(kBlockColumns, frame_.width - begin);
    RowPair<const std::uint16_t*> from = {source_.upper + begin, source_.lower + begin};
    if (count < kBlockColumns) {
      load_end(source_.upper, frame_.width, begin, upper_end_);
      load_end(source_.lower, frame_.width, begin, lower_end_);
      from = {upper_end_.data(), lower_end_.data()};
    }
    const bool fits = count == kBlockColumns && has_lower_;
    std::uint16_t* to_upper = fits ? corrected_.upper + begin : upper_result_.data();
    std::uint16_t* to_lower = fits ? corrected_.lower + begin : lower_result_.data();
    const bool has_clipped =
        correct_block(from.upper, from.lower, table_.block(row_, index), table_.scale(),
                      settings_.output, settings_.clip_level, to_upper, to_lower);
    if (!fits) {
      std::copy_n(to_upper, count, corrected_.upper + begin);
      if (has_lower_) std::copy_n(to_lower, count, corrected_.lower + begin);
    }
    if (has_clipped) correct_clipped(index, from);
    for (; !special_.empty() && special_.front().column < (index + 1) * kBlockCells;
         special_ = special_.subspan(1)) {
      correct_cell(special_.front(), from, begin);
    }
  }

  /// Those that are special too are corrected again afterwards.
  void correct_clipped(int index, const RowPair<const std::uint16_t*>& from) {
    const int first = index * kBlockCells;
    const int last = std::min(first + kBlockCells, table_.columns());
    for (int column = first; column < last; ++column) {
      const std::ptrdiff_t place = std::ptrdiff_t{2} * (column - first);
      const std::uint16_t* upper = from.upper + place;
      const std::uint16_t* lower = from.lower + place;
      if (std::max({upper[0], upper[1], lower[0], lower[1]}) < settings_.clip_level) continue;
      CellRecord cell;
      cell.column = column;
      cell.coefficients = table_.coefficients(row_, column);
      correct_cell(cell, from, index * kBlockColumns);
    }
  }

  void correct_cell(const CellRecord& cell, const RowPair<const std::uint16_t*>& from, int begin) {
    const int column = 2 * cell.column;
    const std::uint16_t* upper = from.upper + (column - begin);
    const std::uint16_t* lower = from.lower + (column - begin);
    const CorrectedCell corrected =
        correct_special(cell, {upper[0], upper[1], lower[0], lower[1]}, settings_.clip_level,
                        settings_.rescue, settings_.output);
    const int count = std::min(2, frame_.width - column);
    std::copy_n(corrected.samples.data(), count, corrected_.upper + column);
    if (has_lower_) std::copy_n(corrected.samples.data() + 2, count, corrected_.lower + column);
    for (auto* flags : {flags_.upper, flags_.lower}) {
      if (flags != nullptr) std::fill_n(flags + column, count, corrected.flags);
    }
  }

  const FramePart& frame_;
  const CorrectionTable& table_;
  const RowSettings& settings_;
  int row_;
  bool has_lower_ = true;
  RowPair<const std::uint16_t*> source_{};
  RowPair<std::uint16_t*> corrected_{};
  RowPair<std::uint8_t*> flags_{};
  std::span<const CellRecord> special_;
  BlockRow upper_end_, lower_end_, upper_result_, lower_result_;
};

}  // namespace

void correct_rows(const FramePart& frame, const CorrectionTable& table, const RowSettings& settings,
                  const CorrectedRows& corrected, int begin, int end) {
  for (int row = begin; row < end; ++row) {
    RowCorrector(frame, table, settings, corrected, row).correct();
  }
}

}  // namespace kv::polarization
