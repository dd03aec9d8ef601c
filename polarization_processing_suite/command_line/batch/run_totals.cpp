// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/batch/run_totals.h"

#include <iomanip>
#include <sstream>

#include "command_line/json_output.h"

namespace kv::polarization {
namespace {

std::string frames_text(std::size_t frames) {
  return std::to_string(frames) + (frames == 1 ? " frame" : " frames");
}

std::string bytes_text(std::uint64_t bytes) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(1);
  if (bytes >= 1'000'000'000) {
    text << static_cast<double>(bytes) / 1e9 << " GB";
  } else {
    text << static_cast<double>(bytes) / 1e6 << " MB";
  }
  return text.str();
}

double rate(double count, double seconds) { return seconds > 0 ? count / seconds : 0; }

}  // namespace

void RunTotals::add(const FrameReport& report) {
  using enum FrameReport::Outcome;
  if (report.outcome == done) frames += report.frames;
  if (report.outcome == failed) this->failed += report.frames;
  if (report.outcome == skipped) this->skipped += report.frames;
  results += report.results.size();
  for (const JournalFile& file : report.results) bytes += file.size;
  pixels += report.pixels;
  transform_seconds += report.transform_seconds;
  clipped_pixels += report.clipped_pixels;
  if (report.clipped_pixels > 0) ++clipped_frames;
}

Json json_of(const RunTotals& totals) {
  return {{"frames", totals.frames},
          {"failed", totals.failed},
          {"skipped", totals.skipped},
          {"results", totals.results},
          {"bytes", totals.bytes},
          {"seconds", totals.seconds},
          {"frames_per_second", rate(static_cast<double>(totals.frames), totals.seconds)},
          {"transform_megapixels_per_second", rate(totals.pixels / 1e6, totals.transform_seconds)},
          {"clipped_frames", totals.clipped_frames}};
}

std::string summary_of(const RunTotals& totals, const std::string& destination, bool dry_run) {
  std::ostringstream line;
  line << frames_text(totals.frames) << (dry_run ? " would be transformed" : " transformed");
  if (totals.skipped > 0) line << ", " << totals.skipped << " done before";
  if (totals.failed > 0) line << ", " << totals.failed << " failed";
  if (dry_run) {
    line << "; " << totals.results << " files of at most " << bytes_text(totals.bytes);
  } else if (totals.frames > 1) {
    line << " in " << std::fixed << std::setprecision(1) << totals.seconds << " s, "
         << rate(static_cast<double>(totals.frames), totals.seconds) << " frames per second";
  }
  if (totals.transform_seconds > 0) {
    line << "; " << std::fixed << std::setprecision(0)
         << rate(totals.pixels / 1e6, totals.transform_seconds)
         << " megapixels per second in the transform itself, without files and pictures";
  }
  if (totals.frames > 0) line << "; results in " << destination;
  return line.str();
}

std::string clipping_of(const RunTotals& totals) {
  if (totals.clipped_frames == 0) return "";
  std::ostringstream line;
  line << "the plane intensity is clipped in " << frames_text(totals.clipped_frames)
       << ", where S0 exceeds the range of one sample; of all pixels " << std::setprecision(2)
       << 100 * totals.clipped_pixels / totals.pixels
       << " per cent. --planes mean gives the mean of the four samples, which never clips";
  return line.str();
}

}  // namespace kv::polarization
