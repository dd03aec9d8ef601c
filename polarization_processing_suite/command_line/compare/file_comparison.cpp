// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/compare/file_comparison.h"

#include <algorithm>
#include <fstream>
#include <vector>

#include "command_line/path_text.h"
#include "kv/image_files/frame_reader.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

constexpr std::size_t kChunkBytes = std::size_t{1} << 18;

/// The bytes of a file, a chunk at a time.
class ByteStream {
 public:
  explicit ByteStream(const std::filesystem::path& file) : chunk_(kChunkBytes) {
    // A pipe has no bytes that stay.
    if (!std::filesystem::is_regular_file(file)) {
      throw Fault(FaultKind::file,
                  text_of(file) + ": it is missing, or no regular file; check the path");
    }
    stream_.open(file, std::ios::binary);
    if (!stream_) fail(file);
  }

  /// Empty behind the last byte.
  std::string_view next(const std::filesystem::path& file) {
    stream_.read(chunk_.data(), static_cast<std::streamsize>(chunk_.size()));
    if (stream_.bad()) fail(file);
    return {chunk_.data(), static_cast<std::size_t>(stream_.gcount())};
  }

 private:
  [[noreturn]] static void fail(const std::filesystem::path& file) {
    throw Fault(FaultKind::file,
                text_of(file) + ": the file cannot be read; check its permissions");
  }

  std::ifstream stream_;
  std::vector<char> chunk_;
};

/// What differs; empty for files of the same bytes.
std::string byte_difference(const std::filesystem::path& left, const std::filesystem::path& right) {
  ByteStream left_bytes(left);
  ByteStream right_bytes(right);
  for (std::size_t offset = 0;;) {
    const std::string_view a = left_bytes.next(left);
    const std::string_view b = right_bytes.next(right);
    const auto [at, other] = std::ranges::mismatch(a, b);
    offset += static_cast<std::size_t>(at - a.begin());
    if (at != a.end() && other != b.end()) {
      return "the bytes differ from byte " + std::to_string(offset) + " on";
    }
    if (a.size() != b.size()) {
      return "one ends after " + std::to_string(offset) + " bytes, the other goes on";
    }
    if (a.empty()) return "";
  }
}

/// Adds the file's name to faults, whose lines do not repeat it.
template <class Function>
auto naming(const std::filesystem::path& file, Function function) {
  try {
    return function();
  } catch (const Fault& fault) {
    throw Fault(fault.kind(), text_of(file) + ": " + fault.what());
  }
}

/// Null for a file of no known format.
std::unique_ptr<ImageReader> open_if_images(const std::filesystem::path& file) {
  try {
    return naming(file, [&] { return open_images(file); });
  } catch (const Fault& fault) {
    if (fault.kind() == FaultKind::unsupported && !format_of_content(file)) return nullptr;
    throw;
  }
}

FileComparison different(std::string reason) { return {Verdict::different, std::move(reason)}; }

FileComparison compare_images(const std::filesystem::path& left, ImageReader& left_images,
                              const std::filesystem::path& right, ImageReader& right_images,
                              double tolerance) {
  const std::size_t pages = left_images.count();
  if (pages != right_images.count()) {
    return different("pages: " + std::to_string(pages) + " against " +
                     std::to_string(right_images.count()));
  }
  Image a;
  Image b;
  PixelDifferences differences;
  for (std::size_t page = 0; page < pages; ++page) {
    naming(left, [&] { left_images.read(page, a); });
    naming(right, [&] { right_images.read(page, b); });
    if (const std::string shapes = shape_difference(a, b); !shapes.empty()) {
      return different((pages > 1 ? "page " + std::to_string(page + 1) + ": " : "") + shapes);
    }
    add_differences(a, b, tolerance, page, differences);
  }
  if (differences.pixels == 0) return {};
  return {Verdict::different, "", differences};
}

FileComparison compare(const std::filesystem::path& left, const std::filesystem::path& right,
                       const ComparisonSettings& settings) {
  const std::string bytes = byte_difference(left, right);
  if (bytes.empty()) return {};
  if (settings.bytes_only) return different(bytes);
  const auto left_images = open_if_images(left);
  const auto right_images = open_if_images(right);
  if (left_images && right_images) {
    return compare_images(left, *left_images, right, *right_images, settings.tolerance);
  }
  if (!left_images && !right_images) return different(bytes);
  return different(left_images ? "an image, against a file that is none"
                               : "no image, against a file that is one");
}

}  // namespace

FileComparison compare_files(const std::filesystem::path& left, const std::filesystem::path& right,
                             const ComparisonSettings& settings) {
  try {
    return compare(left, right, settings);
  } catch (const Fault& fault) {
    return {Verdict::failed, fault.what()};
  } catch (const std::filesystem::filesystem_error& error) {
    return {Verdict::failed, error.what()};
  }
}

std::string text_of(const FileComparison& comparison) {
  if (!comparison.pixels) return comparison.reason;
  const PixelDifferences& pixels = *comparison.pixels;
  std::string text = std::to_string(pixels.pixels) + " of " + std::to_string(pixels.all_pixels) +
                     " pixels differ, by at most " + text_of(PixelValue{pixels.largest}) +
                     "; the first at column " + std::to_string(pixels.column) + ", row " +
                     std::to_string(pixels.row);
  if (pixels.page > 0) text += ", page " + std::to_string(pixels.page + 1);
  if (pixels.channel > 0) text += ", channel " + std::to_string(pixels.channel);
  return text + ": " + text_of(pixels.left) + " against " + text_of(pixels.right);
}

}  // namespace kv::polarization
