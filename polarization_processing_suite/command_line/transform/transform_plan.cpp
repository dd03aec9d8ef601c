// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/transform_plan.h"

#include <algorithm>
#include <numeric>
#include <set>

#include "command_line/batch/provenance_record.h"
#include "command_line/options/common_options.h"
#include "command_line/options/values.h"
#include "command_line/outputs/collisions.h"
#include "command_line/outputs/own_results.h"
#include "command_line/path_text.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

InputList inputs_of(const TransformOptions& options, const Journal& journal) {
  InputRequest request{.words = options.input.words,
                       .recursive = options.input.recursive,
                       .skip = options.input.skip,
                       .headerless = options.recipe.raw_shape.has_value()};
  const std::filesystem::path folder = options.output.folder;
  request.is_own_result = [&](const std::filesystem::path& file) {
    const auto name =
        json_text(file.lexically_normal().lexically_relative(folder.lexically_normal()));
    return journal.has_result(name) || is_own_result(file);
  };
  return list_inputs(request);
}

/// What an input is called that can be opened only once; none for a file.
std::optional<std::string> name_of_pipe(const Input& input) {
  if (input.is_standard_input()) return "standard input";
  std::error_code unknown;
  const std::filesystem::file_status status = std::filesystem::status(input.path, unknown);
  if (!std::filesystem::exists(status) || std::filesystem::is_regular_file(status) ||
      std::filesystem::is_directory(status)) {
    return std::nullopt;
  }
  return text_of(input.path);
}

/// Whether an input of an earlier run is here, and is another file than this one.
bool is_other_input(const std::string& earlier, const Input& input) {
  if (earlier.empty() || earlier == json_text(input.path)) return false;
  std::error_code unknown;
  return std::filesystem::exists(path_of(earlier), unknown) &&
         !std::filesystem::equivalent(path_of(earlier), input.path, unknown) && !unknown;
}

std::vector<std::size_t> wanted_pages(std::size_t pages, const std::vector<std::size_t>& chosen) {
  std::vector<std::size_t> wanted;
  if (chosen.empty()) {
    wanted.resize(pages);
    std::iota(wanted.begin(), wanted.end(), std::size_t{0});
  }
  for (const std::size_t page : chosen) {
    if (page <= pages) wanted.push_back(page - 1);
  }
  return wanted;
}

bool in_folders(const std::vector<Input>& inputs) {
  return std::ranges::any_of(inputs, [](const Input& input) { return !input.folder.empty(); });
}

}  // namespace

TransformPlan::TransformPlan(const TransformOptions& options, const Journal& journal)
    : TransformPlan(options, inputs_of(options, journal)) {}

TransformPlan::TransformPlan(const TransformOptions& options, InputList list)
    : results_(results_of(options.recipe)),
      own_results_(list.own_results),
      names_(options.output, in_folders(list.inputs)) {
  for (Input& input : list.inputs) {
    PlannedInput planned{.input = std::move(input)};
    find_pages(planned, options);
    inputs_.push_back(std::move(planned));
  }
}

void TransformPlan::find_pages(PlannedInput& planned, const TransformOptions& options) {
  if (const auto name = name_of_pipe(planned.input)) {
    const auto& raw_shape = options.recipe.raw_shape;
    try {
      planned.source = planned.input.is_standard_input()
                           ? std::make_shared<FrameSource>(raw_shape)
                           : std::make_shared<FrameSource>(planned.input.path, raw_shape);
    } catch (const Fault& fault) {
      throw Fault(fault.kind(), *name + ": " + fault.what());
    }
    planned.pages = planned.source->count();
  } else {
    try {
      planned.pages = open_frames_of_user(planned.input.path, options.recipe.raw_shape)->count();
    } catch (const Fault&) {
      planned.pages = 1;  // the run tells of it, in its turn
    }
  }
  if (planned.pages) planned.wanted = wanted_pages(*planned.pages, options.input.pages);
}

std::optional<std::size_t> TransformPlan::frames() const {
  std::size_t frames = 0;
  for (const PlannedInput& planned : inputs_) {
    if (!planned.pages) return std::nullopt;
    frames += planned.wanted.size();
  }
  return frames;
}

template <class Visit>
void TransformPlan::for_each_name_of(std::size_t input, Visit visit) const {
  const PlannedInput& planned = inputs_[input];
  if (!planned.pages) return;
  std::set<std::string> stacks;
  for (const Result& result : results_) {
    const bool stacked = names_.is_stacked(result, planned.pages);
    if (stacked && !stacks.insert(names_.plane_of(result, planned.pages)).second) continue;
    for (const std::size_t page : planned.wanted) {
      const auto name = names_.name_of(planned.input, {input, page, planned.pages}, result);
      visit(name);
      if (!traits_of(result.format).keeps_text) visit(sidecar_of(name));
      if (stacked) break;
    }
  }
}

template <class Visit>
void TransformPlan::for_each_name(Visit visit) const {
  for (std::size_t input = 0; input < inputs_.size(); ++input) {
    for_each_name_of(input, [&](const std::filesystem::path& name) { visit(input, name); });
  }
}

std::vector<std::filesystem::path> TransformPlan::folders() const {
  std::set<std::filesystem::path> folders;
  for_each_name([&](std::size_t, const std::filesystem::path& name) {
    folders.insert((names_.folder() / name).parent_path());
  });
  return {folders.begin(), folders.end()};
}

void TransformPlan::check_results(const OutputOptions& options, const Journal& journal) const {
  check_collisions();
  if (options.existing == Existing::overwrite || options.dry_run) return;
  std::size_t there = 0;
  std::filesystem::path first;
  for_each_name([&](std::size_t input, const std::filesystem::path& name) {
    const std::filesystem::path path = names_.folder() / name;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path))) return;
    // What a killed run has left is its own.
    const bool resumes = options.existing == Existing::resume;
    const std::string owner = resumes ? journal.owner_of(json_text(name)) : "";
    if (is_other_input(owner, inputs_[input].input)) {
      throw Fault(FaultKind::argument, path.string() + " is a result of " + owner +
                                           ", and would become one of " +
                                           json_text(inputs_[input].input.path) +
                                           "; choose another folder, or replace it by --overwrite");
    }
    if (resumes &&
        (journal.has_result(json_text(name)) || is_own_result(path) || is_own_sidecar(path))) {
      return;
    }
    if (there++ == 0) first = path;
  });
  if (there == 0) return;
  const std::string others =
      there == 1 ? "" : ", and so are " + std::to_string(there - 1) + " other results";
  throw Fault(FaultKind::argument,
              first.string() + " is there already" + others +
                  (options.existing == Existing::resume
                       ? ", and not of kv-polarize; move it away, or replace it by --overwrite"
                       : "; --resume does what is missing, --overwrite replaces them"));
}

std::vector<std::filesystem::path> TransformPlan::results_of_input(std::size_t input) const {
  std::vector<std::filesystem::path> results;
  for_each_name_of(input, [&](const std::filesystem::path& name) { results.push_back(name); });
  return results;
}

void TransformPlan::check_collisions() const {
  std::vector<Input> inputs;
  for (const PlannedInput& planned : inputs_) inputs.push_back(planned.input);
  NameRegister names(inputs, [this](std::size_t owner) {
    std::vector<std::filesystem::path> results = results_of_input(owner);
    for (std::filesystem::path& result : results) result = names_.folder() / result;
    return results;
  });
  for_each_name([&](std::size_t input, const std::filesystem::path& name) {
    names.add(names_.folder() / name, input);
  });
}

}  // namespace kv::polarization
