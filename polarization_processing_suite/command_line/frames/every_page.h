// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "command_line/frames/frame_options.h"

namespace kv::polarization {

/// A frame's place among those of a command line.
struct PagePlace {
  std::size_t file = 0;   ///< from 0 up, in the order of the command line
  std::size_t page = 0;   ///< from 0 up
  std::size_t pages = 1;  ///< of the file

  bool operator<(const PagePlace& other) const {
    return file != other.file ? file < other.file : page < other.page;
  }
};

/// The file, and the page where there are several.
std::string name_of(const std::filesystem::path& file, const PagePlace& place);

/// Reads a page as the settings tell, and warns of what its file notes and of samples that have
/// more bits than they claim.
void read_page(FrameReader& reader, std::size_t page, const FrameSettings& settings,
               const std::string& name, Frame& frame);

using PageWork = std::function<void(const PagePlace&, const Frame&)>;

struct PageCounts {
  std::size_t done = 0;
  std::size_t failed = 0;  ///< pages, and files that cannot be opened

  int exit_status() const;
};

/// Reads all pages of all files on all cores, and hands each to the work of its thread, which
/// make_work makes. Pages begin in their order. What an exception of Fault or a lack of memory
/// stops is reported, and the others go on. After Ctrl-C no further page begins.
PageCounts for_every_page(const std::vector<std::filesystem::path>& files,
                          const FrameSettings& settings,
                          const std::function<PageWork()>& make_work);

}  // namespace kv::polarization
