#include <cstring>

#include "toolkit/calibration/correction/coefficient_blocks.h"

namespace kv::polarization {
namespace {

using Line = std::array<float, kBlockCells>;

/// Two neighbouring samples at once: the left one is in the lower half, as x86 stores words.
std::uint32_t load_pair(const std::uint16_t* samples, std::size_t cell) {
  std::uint32_t pair;
  std::memcpy(&pair, samples + 2 * cell, sizeof pair);
  return pair;
}

/// The samples of a row of the block's cells above black, in steps of the matrix.
void load_row(const std::uint16_t* samples, const std::int16_t* block,
              const CoefficientScale& scale, std::size_t place, Line& left, Line& right) {
  const std::int16_t* left_black = block + place * kBlockCells;
  const std::int16_t* right_black = left_black + kBlockCells;
  const float left_mean = scale.means[place];
  const float right_mean = scale.means[place + 1];
  for (std::size_t cell = 0; cell < kBlockCells; ++cell) {
    const std::uint32_t pair = load_pair(samples, cell);
    left[cell] = static_cast<float>(static_cast<std::int32_t>(pair & 0xFFFF)) -
                 scale.black_step * (static_cast<float>(left_black[cell]) + left_mean);
    right[cell] = static_cast<float>(static_cast<std::int32_t>(pair >> 16)) -
                  scale.black_step * (static_cast<float>(right_black[cell]) + right_mean);
  }
}

/// A row of the matrix times the samples, in steps.
void multiply(const CellOf<Line>& samples, const std::int16_t* block,
              const CoefficientScale& scale, std::size_t row, Line& result) {
  const std::int16_t* deviations = block + row * kBlockCells;
  const auto& means = scale.means;
  for (std::size_t cell = 0; cell < kBlockCells; ++cell) {
    const auto term = [&](std::size_t place) {
      return (static_cast<float>(deviations[place * kBlockCells + cell]) + means[row + place]) *
             samples[place][cell];
    };
    result[cell] = (term(0) + term(1)) + (term(2) + term(3));
  }
}

std::uint32_t rounded(float value) {
  // Not below 0, so that the conversion, which drops fractions, rounds halves up.
  const float positive = value > 0 ? value : 0;
  constexpr float kGreatest = kGreatestCorrected;
  const float within = positive < kGreatest ? positive : kGreatest;
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(within + 0.5f));
}

}  // namespace

void correct_block(const std::uint16_t* upper, const std::uint16_t* lower,
                   const std::int16_t* block, const CoefficientScale& scale,
                   const OutputScale& output, std::uint16_t* corrected_upper,
                   std::uint16_t* corrected_lower) {
  CellOf<Line> samples;
  load_row(upper, block, scale, 0, samples[0], samples[1]);
  load_row(lower, block, scale, 2, samples[2], samples[3]);
  Line mean;
  Line first;
  Line second;
  multiply(samples, block, scale, kMean, mean);
  multiply(samples, block, scale, kFirst, first);
  multiply(samples, block, scale, kSecond, second);
  const float factor = scale.matrix_step * output.factor;
  for (std::size_t cell = 0; cell < kBlockCells; ++cell) {
    const float middle = mean[cell] * factor + output.pedestal;
    const float a = first[cell] * factor;
    const float b = second[cell] * factor;
    const std::uint32_t upper_pair = rounded(middle + a) | rounded(middle + b) << 16;
    const std::uint32_t lower_pair = rounded(middle - b) | rounded(middle - a) << 16;
    std::memcpy(corrected_upper + 2 * cell, &upper_pair, sizeof upper_pair);
    std::memcpy(corrected_lower + 2 * cell, &lower_pair, sizeof lower_pair);
  }
}

bool reaches(const std::uint16_t* samples, std::uint16_t level) {
  std::uint16_t any = 0;
  for (std::size_t i = 0; i < kBlockColumns; ++i) {
    any = static_cast<std::uint16_t>(any | (samples[i] >= level ? 1 : 0));
  }
  return any != 0;
}

}  // namespace kv::polarization
