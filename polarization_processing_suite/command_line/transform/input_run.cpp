// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/input_run.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kv::polarization {

InputRun::InputRun(const TransformContext& context, std::size_t number,
                   std::shared_ptr<FrameSource> source)
    : context_(context),
      planned_(context.plan.inputs()[number]),
      number_(number),
      source_(std::move(source)) {}

std::vector<Result> InputRun::sharing(const Result& result) const {
  const ResultNames& names = context_.plan.names();
  const std::string plane = names.plane_of(result, planned_.pages);
  std::vector<Result> results;
  std::ranges::copy_if(
      context_.plan.results(), std::back_inserter(results),
      [&](const Result& one) { return names.plane_of(one, planned_.pages) == plane; });
  return results;
}

StackOutput* InputRun::stack_of(const Result& result, int bit_depth, const ImageShape& shape) {
  const ResultNames& names = context_.plan.names();
  const std::lock_guard lock(mutex_);
  if (failed_) return nullptr;
  Stack& stack = stacks_[names.plane_of(result, planned_.pages)];
  if (stack.output == nullptr) {
    const std::vector<Result> results = sharing(result);
    const std::filesystem::path path =
        names.path_of(planned_.input, {number_, 0, planned_.pages}, result);
    const WriteOptions options{
        .provenance = provenance_text(context_, planned_, *source_, {}, results, bit_depth),
        .compression = context_.options.recipe.compression};
    ImageShape all = shape;
    all.images = planned_.wanted.size() * results.size();
    if (!traits_of(result.format).keeps_text) {
      stack.sidecar = sidecar_text(options.provenance, all);
    }
    stack.output = std::make_unique<StackOutput>(path, result.format, all.images, options);
  }
  return stack.output.get();
}

std::size_t InputRun::place_in_stack(const Result& result, std::size_t frame) const {
  const std::vector<Result> results = sharing(result);
  const auto found = std::ranges::find(results, result.name, &Result::name);
  return frame * results.size() + static_cast<std::size_t>(found - results.begin());
}

bool InputRun::frame_done(const std::vector<JournalFile>& files) {
  const std::lock_guard lock(mutex_);
  files_.insert(files_.end(), files.begin(), files.end());
  return ++done_ == planned_.wanted.size() && !failed_;
}

bool InputRun::frame_failed() {
  const std::lock_guard lock(mutex_);
  const bool is_first = !failed_;
  failed_ = true;
  for (auto& [plane, stack] : stacks_) {
    if (stack.output != nullptr) stack.output->give_up();  // else it is what could not be made
  }
  const ResultNames& names = context_.plan.names();
  return is_first && std::ranges::any_of(context_.plan.results(), [&](const Result& result) {
           return names.is_stacked(result, planned_.pages);
         });
}

bool InputRun::frame_over() {
  const std::lock_guard lock(mutex_);
  return ++over_ == planned_.wanted.size();
}

std::vector<JournalFile> InputRun::publish_stacks(Publishing publishing) {
  std::vector<JournalFile> files;
  for (auto& [plane, stack] : stacks_) {
    FrameOutput sidecar;
    if (!stack.sidecar.empty()) sidecar.add_text(sidecar_of(stack.output->path()), stack.sidecar);
    sidecar.write(1, publishing);
    stack.output->publish(publishing);
    const std::filesystem::path& folder = context_.plan.names().folder();
    files.push_back(journal_file(stack.output->path(), folder));
    for (const JournalFile& file : sidecar.files(folder)) files.push_back(file);
  }
  stacks_.clear();
  files_.insert(files_.end(), files.begin(), files.end());
  return files;
}

JournalEntry InputRun::journal_entry() const {
  JournalEntry entry{json_text(planned_.input.path),
                     source_->identity().value_or(ContentIdentity{}), context_.recipe_hash,
                     planned_.wanted.size(), files_};
  std::ranges::sort(entry.results, {}, &JournalFile::name);
  return entry;
}

}  // namespace kv::polarization
