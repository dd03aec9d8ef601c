// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>

// What a process holds of its system, as Linux and glibc tell.
namespace kv::endurance {

inline std::size_t entries_of(const char* folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder),
                                                std::filesystem::directory_iterator()));
}

/// Files that are mapped into the process, and how often.
inline std::multiset<std::string> mapped_files() {
  std::multiset<std::string> files;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    const std::size_t path = line.find('/');
    if (path != std::string::npos) files.insert(line.substr(path));
  }
  return files;
}

struct ProcessFigures {
  std::size_t resident_kib = 0;
  std::size_t allocated = 0;  ///< bytes that malloc has handed out
  std::size_t descriptors = 0;
  std::size_t threads = 0;
};

inline ProcessFigures process_figures() {
  ProcessFigures figures;
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) figures.resident_kib = std::stoul(line.substr(6));
  }
  status.close();
  figures.descriptors = entries_of("/proc/self/fd");
  figures.threads = entries_of("/proc/self/task");
  const struct mallinfo2 heap = mallinfo2();
  figures.allocated = heap.uordblks + heap.hblkhd;
  return figures;
}

/// First, last and greatest of the figures that a program sampled.
class Samples {
 public:
  void take() {
    const ProcessFigures now = process_figures();
    if (count_++ == 0) first_ = most_ = now;
    last_ = now;
    most_.resident_kib = std::max(most_.resident_kib, now.resident_kib);
    most_.allocated = std::max(most_.allocated, now.allocated);
    most_.descriptors = std::max(most_.descriptors, now.descriptors);
    most_.threads = std::max(most_.threads, now.threads);
  }

  /// Pages that the kernel hands out late make up to `slack_kib`; what malloc has handed out
  /// differs by what it rounds, and by names of files that the sampling reads.
  bool constant(std::size_t slack_kib) const {
    constexpr std::size_t slack_bytes = 1 << 16;
    return most_.resident_kib <= first_.resident_kib + slack_kib &&
           most_.allocated <= first_.allocated + slack_bytes &&
           most_.descriptors == first_.descriptors && most_.threads == first_.threads;
  }

  void print() const {
    std::cout << "resident " << first_.resident_kib << " KiB first, " << last_.resident_kib
              << " last, " << most_.resident_kib << " at most; from malloc " << first_.allocated
              << " bytes first, " << last_.allocated << " last, " << most_.allocated
              << " at most; descriptors " << first_.descriptors << ", " << last_.descriptors << ", "
              << most_.descriptors << "; threads " << first_.threads << ", " << last_.threads
              << ", " << most_.threads << "; " << count_ << " samples";
  }

 private:
  std::size_t count_ = 0;
  ProcessFigures first_;
  ProcessFigures last_;
  ProcessFigures most_;
};

}  // namespace kv::endurance
