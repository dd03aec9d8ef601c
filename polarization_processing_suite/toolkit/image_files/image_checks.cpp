// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/image_files/image_checks.h"

#include <string>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/format_table.h"
#include "toolkit/image_files/samples.h"

namespace kv::polarization {
namespace {

constexpr std::string_view kKindNames[] = {"grey images", "planes of floats", "pictures"};

[[noreturn]] void refuse(const std::string& line) { throw Fault(FaultKind::argument, line); }

void check_size(int width, int height, int channels, std::size_t values) {
  if (width < 1 || height < 1 || channels < 1) {
    refuse("an image of " + std::to_string(width) + " x " + std::to_string(height) +
           " pixels with " + std::to_string(channels) +
           " channels is empty; all three must be 1 or more");
  }
  const std::size_t needed = pixel_count(width, height) * static_cast<std::size_t>(channels);
  if (values != needed) {
    refuse("an image of " + std::to_string(width) + " x " + std::to_string(height) +
           " pixels with " + std::to_string(channels) + " channels has " + std::to_string(needed) +
           " values; there are " + std::to_string(values));
  }
}

void check_samples(const GreyImage& image) {
  if (image.bit_depth < 1 || image.bit_depth > 16) {
    refuse("a bit depth of " + std::to_string(image.bit_depth) +
           " cannot be; it must be from 1 to 16");
  }
  const int limit = full_scale(image.bit_depth);
  if (limit < 65535 && any_has(image.samples, static_cast<std::uint16_t>(~limit))) {
    refuse("samples are above " + std::to_string(limit) + ", the largest value of " +
           std::to_string(image.bit_depth) + " bits; the image needs a greater bit depth");
  }
}

void require_kind(ImageFormat format, ImageKind kind) {
  const ImageFormatTraits& traits = traits_of(format);
  if (traits.writes(kind)) return;
  const std::string why = traits.available()
                              ? std::string(traits.name) + " files hold no " +
                                    std::string(kKindNames[static_cast<std::size_t>(kind)])
                              : std::string(traits.missing);
  throw Fault(FaultKind::unsupported,
              why + "; they can be written as " +
                  list_of_names([kind](const auto& known) { return known.writes(kind); }));
}

}  // namespace

void check_image(ImageFormat format, const GreyImage& image) {
  check_size(image.width, image.height, 1, image.samples.size());
  check_samples(image);
  require_kind(format, ImageKind::grey);
}

void check_image(ImageFormat format, const FloatImage& image) {
  check_size(image.width, image.height, image.channels, image.values.size());
  require_kind(format, ImageKind::floats);
}

void check_image(ImageFormat format, const Picture& picture) {
  check_size(picture.width, picture.height, picture.channels, picture.bytes.size());
  if (picture.channels != 1 && picture.channels != 3) {
    refuse("a picture of " + std::to_string(picture.channels) +
           " channels cannot be shown; it must have 1, grey, or 3, red, green and blue");
  }
  require_kind(format, ImageKind::picture);
}

}  // namespace kv::polarization
