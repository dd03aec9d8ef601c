// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/transform/transform_context.h"

#include "command_line/json_output.h"
#include "command_line/transform/page_list.h"
#include "kv/calibration/calibration_file.h"

namespace kv::polarization {
namespace {

std::string stacking_text(const TransformOptions& options) {
  return kStackingNames[static_cast<std::size_t>(*options.output.stacking)];
}

/// All that decides on the results' bytes: options that ask for the same in other words have the
/// same text.
std::string recipe_text(const TransformContext& context) {
  const TransformOptions& options = context.options;
  Json json;
  json["software"] = software_name();
  for (const Result& result : context.plan.results()) {
    json["results"].push_back(arguments_for(options.recipe, {&result, 1}));
  }
  json["names"] = options.output.names;
  if (options.output.stacking) json["stack"] = stacking_text(options);
  json["pages"] = options.input.pages;
  if (context.calibration_identity) json["calibration"] = context.calibration_identity->hash;
  const MachineRecord& machine = this_machine();
  json["tier"] = machine.tier;
  json["reciprocals"] = machine.reciprocals;
  return line_of(json);
}

}  // namespace

TransformContext make_context(const TransformOptions& options, const TransformPlan& plan) {
  TransformContext context{.options = options, .plan = plan, .mosaic = options.recipe.mosaic};
  if (const auto& file = options.recipe.calibration) {
    context.calibration = load_calibration(*file);
    // The JSON holds the sums of its maps.
    context.calibration_identity = identity_of(*file);
    if (!options.recipe.mosaic_given) context.mosaic = context.calibration->mosaic;
  }
  context.recipe_hash = hash_of(recipe_text(context));
  return context;
}

std::string provenance_text(const TransformContext& context, const PlannedInput& planned,
                            const FrameSource& source, std::optional<std::size_t> page,
                            std::span<const Result> results, int bit_depth) {
  const TransformOptions& options = context.options;
  ProvenanceRecord record;
  record.input = json_text(planned.input.path);
  record.identity = source.identity();
  record.command = {"transform", record.input};
  for (const std::string& argument : arguments_for(options.recipe, results)) {
    record.command.push_back(argument);
  }
  const auto add = [&record](const char* option, const std::string& value) {
    record.command.insert(record.command.end(), {option, value});
  };
  if (page) {
    record.page = *page + 1;
    add("--pages", std::to_string(*page + 1));
  } else if (!options.input.pages.empty()) {
    add("--pages", page_list_text(options.input.pages));
  }
  if (options.output.stacking) add("--stack", stacking_text(options));
  record.mosaic = context.mosaic;
  record.bit_depth = bit_depth;
  if (results.front().kind != ImageKind::picture) record.output_max = options.recipe.output_max;
  if (const auto& calibration = options.recipe.calibration) {
    record.calibration = json_text(*calibration);
    record.calibration_identity = context.calibration_identity;
  }
  return line_of(json_of(record));
}

}  // namespace kv::polarization
