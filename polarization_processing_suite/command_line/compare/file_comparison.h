// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "command_line/compare/image_difference.h"

namespace kv::polarization {

struct ComparisonSettings {
  double tolerance = 0;     ///< see add_differences; of values in the files' own units
  bool bytes_only = false;  ///< images are compared as any other file
};

enum class Verdict { equal, different, failed };

/// What came of the comparison of two files.
struct FileComparison {
  Verdict verdict = Verdict::equal;
  std::string reason;  ///< why it failed, or what differs that is no pixel; else empty
  std::optional<PixelDifferences> pixels{};  ///< of images of the same shape that differ
};

/// Compares the pixels of two files of images, of whatever formats and with whatever else they
/// record, and the bytes of other files. Headerless frames are such others. Files of the same bytes
/// are equal, whatever they are, and cost no more than to read them. A file that cannot be read is
/// told as failed; nothing is thrown but for lack of memory.
FileComparison compare_files(const std::filesystem::path& left, const std::filesystem::path& right,
                             const ComparisonSettings& settings = {});

/// One line on what differs, or why the comparison failed, without the files' names; empty for
/// equal files. Columns, rows and channels count from 0, pages from 1.
std::string text_of(const FileComparison& comparison);

}  // namespace kv::polarization
