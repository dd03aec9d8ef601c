// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// What FrameWork makes files of.
#include <algorithm>

#include "command_line/transform/frame_work.h"

namespace kv::polarization {
namespace {

/// Room for headers, texts and legends beside the pixels.
constexpr std::uint64_t kMostOfHeaders = 4096;
constexpr std::uint64_t kMostOfLegends = 400'000;

/// One page's number, where a file has several.
std::optional<std::size_t> page_of(const FramePlace& place) {
  if (place.pages == 1u) return std::nullopt;
  return place.page;
}

}  // namespace

GreyImage FrameWork::grey_image_of(const Result& result) const {
  if (const auto* plane = std::get_if<Plane>(&result.what)) {
    return {planes_.width(), planes_.height(), 16, planes_.levels(*plane)};
  }
  // Samples may have more bits than they claim, and then so have means.
  const bool fits = std::ranges::max(mean_) <= full_scale(source_->bit_depth);
  return {source_->width, source_->height, fits ? source_->bit_depth : 16, mean_};
}

FloatImage FrameWork::float_image_of() const {
  return {planes_.width(), planes_.height(), 2, planes_.normalized_stokes()};
}

void FrameWork::write_result(const Result& result, PendingFile& file,
                             const WriteOptions& options) const {
  switch (result.kind) {
    case ImageKind::grey:
      return write_image(file, result.format, grey_image_of(result), options);
    case ImageKind::floats:
      return write_image(file, result.format, float_image_of(), options);
    case ImageKind::picture: {
      const auto kind = std::get<PictureKind>(result.what);
      return write_image(file, result.format, picture_of(kind, picture_source_.maps(), ranges_),
                         options);
    }
  }
}

void FrameWork::write(InputRun& input, const FramePlace& place, FrameReport& report,
                      Publishing publishing) {
  const ResultNames& names = context_.plan.names();
  FrameOutput output;
  for (const Result& result : context_.plan.results()) {
    if (names.is_stacked(result, place.pages)) continue;
    const std::string provenance = provenance_text(context_, input.planned(), input.source(),
                                                   page_of(place), {&result, 1}, raw_bit_depth_);
    const std::filesystem::path path = names.path_of(input.planned().input, place, result);
    // Before the result: a run that is killed in between leaves none that nobody knows.
    if (!traits_of(result.format).keeps_text) {
      output.add_text(sidecar_of(path), sidecar_text(provenance, shape_of(result)));
    }
    output.add(path, [this, &result, provenance](PendingFile& file) {
      write_result(result, file, {.provenance = provenance, .compression = recipe_.compression});
    });
  }
  for (const Result& result : context_.plan.results()) {
    if (names.is_stacked(result, place.pages)) add_to_stack(input, report.place, result);
  }
  output.write(context_.threads, publishing);
  report.results = output.files(names.folder());
}

void FrameWork::write_to_standard_output(InputRun& input, const FramePlace& place) {
  const Result& result = context_.plan.results().front();
  const std::string provenance = provenance_text(context_, input.planned(), input.source(),
                                                 page_of(place), {&result, 1}, raw_bit_depth_);
  PendingFile file = PendingFile::standard_output();
  write_result(result, file, {.provenance = provenance, .compression = recipe_.compression});
  file.close();
}

void FrameWork::add_to_stack(InputRun& input, std::size_t frame, const Result& result) {
  StackOutput* stack = input.stack_of(result, raw_bit_depth_, shape_of(result));
  if (stack == nullptr) return;
  stack->add(input.place_in_stack(result, frame), [&](StackWriter& writer) {
    if (result.kind == ImageKind::floats) {
      writer.add(float_image_of());
    } else {
      writer.add(grey_image_of(result));
    }
  });
}

ImageShape FrameWork::shape_of(const Result& result) const {
  if (result.kind == ImageKind::floats) return {source_->width, source_->height, 2, 4};
  const int bytes = grey_image_of(result).bit_depth > 8 ? 2 : 1;
  return {source_->width, source_->height, 1, bytes};
}

std::uint64_t FrameWork::most_bytes_of(const Result& result) const {
  const std::uint64_t pixels = source_->samples.size();
  const std::uint64_t bytes = result.kind == ImageKind::floats    ? 8 * pixels
                              : result.kind == ImageKind::picture ? 4 * pixels + kMostOfLegends
                                                                  : 2 * pixels;
  // Incompressible samples grow by five bytes in 32 kilobytes.
  return bytes + bytes / 4096 + kMostOfHeaders;
}

std::vector<JournalFile> FrameWork::estimate(const PlannedInput& planned,
                                             const FramePlace& place) const {
  const ResultNames& names = context_.plan.names();
  std::vector<JournalFile> files;
  for (const Result& result : context_.plan.results()) {
    const bool stacked = names.is_stacked(result, place.pages);
    if (stacked && place.page != planned.wanted.front()) continue;
    const std::filesystem::path name = names.name_of(planned.input, place, result);
    const std::uint64_t bytes =
        most_bytes_of(result) * (stacked ? planned.wanted.size() : std::size_t{1});
    const auto same = std::ranges::find(files, json_text(name), &JournalFile::name);
    if (same != files.end()) {
      same->size += bytes;
      continue;
    }
    files.push_back({json_text(name), bytes});
    if (!traits_of(result.format).keeps_text) {
      files.push_back({json_text(sidecar_of(name)), kMostOfHeaders});
    }
  }
  return files;
}

}  // namespace kv::polarization
