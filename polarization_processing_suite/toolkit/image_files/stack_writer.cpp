// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/image_files/stack_writer.h"

#include <string>

#include "kv/polarization/fault.h"
#include "toolkit/image_files/format_table.h"
#include "toolkit/image_files/image_checks.h"
#include "toolkit/image_files/stored_samples.h"

namespace kv::polarization {
namespace {

[[noreturn]] void refuse_page(const std::string& line) { throw Fault(FaultKind::argument, line); }

}  // namespace

void StackWriter::add(const GreyImage& image) {
  check_image(format_, image);
  check_next({image.width, image.height, 1, bytes_a_sample(image.bit_depth)});
  write(image);
  ++added_;
}

void StackWriter::add(const FloatImage& image) {
  check_image(format_, image);
  check_next({image.width, image.height, image.channels, sizeof(float)});
  write(image);
  ++added_;
}

void StackWriter::check_next(const Shape& shape) {
  if (added_ == images_) {
    refuse_page("the stack is full; " + std::to_string(images_) + " images were announced");
  }
  if (!first_) first_ = shape;
  if (shape == *first_) return;
  const auto text = [](const Shape& image) {
    return std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels with " +
           std::to_string(image.channels) + " channels of " +
           std::to_string(8 * image.element_size) + " bits";
  };
  refuse_page("image " + std::to_string(added_ + 1) + " of the stack has " + text(shape) +
              "; all must be like the first one, of " + text(*first_));
}

void StackWriter::finish() {
  if (added_ < images_) {
    refuse_page("the stack has " + std::to_string(added_) + " images; " + std::to_string(images_) +
                " were announced");
  }
  end();
}

std::unique_ptr<StackWriter> open_stack(PendingFile& file, ImageFormat format, std::size_t images,
                                        const WriteOptions& options) {
  if (images == 0) refuse_page("a stack of no images cannot be written; there must be 1 or more");
  const FormatFunctions& functions = functions_of(format);
  if (functions.open_stack == nullptr) {
    const ImageFormatTraits& traits = traits_of(format);
    const std::string why = traits.available() ? std::string(traits.name) + " files hold one image"
                                               : std::string(traits.missing);
    throw Fault(FaultKind::unsupported,
                why + "; several can be written as " +
                    list_of_names([](const auto& known) { return known.stacks; }));
  }
  return functions.open_stack(file, images, options);
}

}  // namespace kv::polarization
