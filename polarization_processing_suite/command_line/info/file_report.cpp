// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/info/file_report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "command_line/options/common_options.h"
#include "kv/image_files/provenance.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

// What is worth a word. Crossed polarizers lie on the diagonals, whose sums then differ by what the
// gains of classes do: by per cents. A tenth is no such sensor, or not this width.
constexpr double kGreatestDiagonalDifference = 0.1;
constexpr double kGreatestClippedShare = 0.001;
constexpr int kLeastLevels = 16;  // of samples that tell which of their bits are used

std::string per_cent(double share) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2g per cent", 100 * share);
  return text;
}

/// Names the format of words that have their low bits unused.
std::string left_format(int unused_bits) {
  for (const PixelFormatTraits& traits : kPixelFormats) {
    if (traits.packing == Packing::left_words && traits.bit_depth == 16 - unused_bits) {
      return std::string(traits.name);
    }
  }
  return "";
}

class Oddities {
 public:
  Oddities(const PageReport& page, bool is_raw) : page_(page), is_raw_(is_raw) {}

  std::vector<std::string> lines() {
    tell_bits();
    tell_full_scale();
    tell_cells();
    return std::move(lines_);
  }

 private:
  void tell_bits() {
    const FrameFacts& facts = page_.facts;
    if (facts.greatest == 0) {
      lines_.emplace_back("all samples are 0");
    } else if (facts.unused_low_bits > 1 &&
               facts.greatest >> facts.unused_low_bits >= kLeastLevels) {
      tell_alignment(facts.unused_low_bits);
    } else if (page_.bit_depth == 16 && facts.bits_used < 16) {
      lines_.push_back("the greatest sample needs " + std::to_string(facts.bits_used) +
                       " of 16 bits; if the camera has fewer, tell them, such as by --bit-depth " +
                       std::to_string(std::max(facts.bits_used + facts.bits_used % 2, 8)));
    }
  }

  void tell_alignment(int unused) {
    std::string line = "all samples are multiples of " + std::to_string(1 << unused);
    if (page_.bit_depth == 16) {
      line += ": " + std::to_string(16 - unused) + " bits, left-aligned; ";
      const std::string format = left_format(unused);
      line += is_raw_ && !format.empty() ? "--raw-format " + format + " takes them so"
                                         : "--bit-depth 16 is right for them";
    } else {
      line += ", their " + std::to_string(unused) + " low bits are unused";
    }
    lines_.push_back(line);
  }

  void tell_full_scale() {
    const FrameFacts& facts = page_.facts;
    const std::string full = std::to_string(full_scale(page_.bit_depth));
    const double share = static_cast<double>(facts.at_full_scale) /
                         static_cast<double>(pixel_count(page_.width, page_.height));
    if (facts.above_full_scale > 0) {
      lines_.push_back(std::to_string(facts.above_full_scale) + " samples are above " + full +
                       ", the largest value of " + std::to_string(page_.bit_depth) +
                       " bits; check --bit-depth");
    } else if (share > kGreatestClippedShare) {
      lines_.push_back(per_cent(share) + " of the samples are at full scale, " + full +
                       ": their polarization is wrong");
    }
  }

  void tell_cells() {
    if (page_.width % 2 != 0 || page_.height % 2 != 0) {
      lines_.emplace_back("a side is odd, while a sensor has whole cells of 2 x 2 pixels");
    }
    const double difference = std::abs(page_.facts.diagonal_difference);
    if (difference > kGreatestDiagonalDifference) {
      lines_.push_back("the diagonals differ by " + per_cent(difference) +
                       ": this may be no mosaic of four polarizers, or not its width");
    }
  }

  const PageReport& page_;
  bool is_raw_;
  std::vector<std::string> lines_;
};

PageReport read_page(FrameReader& reader, const FileQuestion& question,
                     std::vector<std::string>& odd) {
  PageReport report;
  report.pages = reader.count();
  report.page = question.page;
  if (report.page >= report.pages) {
    throw Fault(FaultKind::argument, "there is no page " + std::to_string(report.page + 1) +
                                         "; the last one is page " + std::to_string(report.pages));
  }
  Frame frame = reader.read(report.page);
  odd = reader.notes();
  if (question.bit_depth) frame.bit_depth = *question.bit_depth;
  if (frame.width < 2 || frame.height < 2) {
    throw Fault(FaultKind::argument, "a frame of " + std::to_string(frame.width) + " x " +
                                         std::to_string(frame.height) +
                                         " pixels has no whole cell; both sides must be 2 or more");
  }
  report.width = frame.width;
  report.height = frame.height;
  report.bit_depth = frame.bit_depth;
  report.facts = facts_of(frame);
  return report;
}

}  // namespace

FileReport look_at(const std::filesystem::path& file, const FileQuestion& question) {
  FileReport report;
  report.file = file;
  const auto format = question.raw_shape ? std::nullopt : format_of_content(file);
  if (format) report.format = traits_of(*format).name;
  std::error_code ignored;
  if (std::filesystem::is_regular_file(file, ignored)) {
    report.bytes = std::filesystem::file_size(file, ignored);
  }
  report.provenance = provenance_of(file).value_or("");
  if (!format && !question.raw_shape) {
    report.guesses = guess_shapes(file);
    if (!report.guesses.empty()) return report;
  }
  const std::unique_ptr<FrameReader> reader = open_frames_of_user(file, question.raw_shape);
  report.page = read_page(*reader, question, report.odd);
  const bool is_raw = !format.has_value();
  for (std::string& line : Oddities(*report.page, is_raw).lines()) {
    report.odd.push_back(std::move(line));
  }
  return report;
}

}  // namespace kv::polarization
