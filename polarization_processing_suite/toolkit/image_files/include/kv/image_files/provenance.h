// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kv::polarization {

/// What a file was made by, as WriteOptions::provenance told when it was written: a line of UTF-8.
/// In PNG it is the text "Provenance", in TIFF the tag Software of the first page, which programs
/// show, and replace when they write the image anew; in PGM a comment. For a file of any other
/// content it is the text of the file at provenance_beside().
///
/// None where nothing tells, for a file that is missing or cannot be read, and for one whose head
/// is damaged. Takes some 20 microseconds, of any size of file.
std::optional<std::string> provenance_of(const std::filesystem::path& path);

/// Where the provenance of a file belongs whose format keeps no text
/// (ImageFormatTraits::keeps_text): NAME.json in its folder. Who writes the file writes that one,
/// too.
std::filesystem::path provenance_beside(const std::filesystem::path& path);

}  // namespace kv::polarization
