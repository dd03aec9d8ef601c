// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/outputs/collisions.h"

#include <algorithm>
#include <utility>

#include "command_line/path_text.h"
#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

std::uint64_t place_hash(const std::string& place) { return std::hash<std::string>{}(place); }

}  // namespace

NameRegister::NameRegister(std::span<const Input> inputs, ResultsOf results_of)
    : inputs_(inputs), results_of_(std::move(results_of)) {
  for (const Input& input : inputs) {
    if (input.is_standard_input()) continue;
    // A link to an input must not be replaced either.
    input_hashes_.insert(place_hash(identity_.place_of(input.path)));
    input_hashes_.insert(place_hash(identity_.file_of(input.path)));
  }
}

void NameRegister::add(const std::filesystem::path& result, std::size_t owner) {
  const std::string place = identity_.place_of(result);
  const std::uint64_t hash = place_hash(place);
  last_owner_ = std::max(last_owner_, owner);
  if (input_hashes_.contains(hash)) refuse_input(place, result, owner);
  if (!result_hashes_.insert(hash)) refuse_earlier(place, result, owner);
}

void NameRegister::refuse_input(const std::string& place, const std::filesystem::path& result,
                                std::size_t owner) {
  const bool is_input = std::ranges::any_of(inputs_, [&](const Input& input) {
    return !input.is_standard_input() &&
           (identity_.place_of(input.path) == place || identity_.file_of(input.path) == place);
  });
  if (!is_input) return;
  throw Fault(FaultKind::argument, "the result " + text_of(result) + " of " + name_of(owner) +
                                       " would replace an input; choose another folder with -o");
}

void NameRegister::refuse_earlier(const std::string& place, const std::filesystem::path& result,
                                  std::size_t owner) {
  for (std::size_t earlier = 0; earlier <= last_owner_; ++earlier) {
    const auto results = results_of_(earlier);
    const auto same = std::ranges::count_if(
        results, [&](const auto& other) { return identity_.place_of(other) == place; });
    if (same == 0 || (earlier == owner && same == 1)) continue;
    throw Fault(
        FaultKind::argument,
        (earlier == owner ? "two results of " + name_of(owner)
                          : "results of " + name_of(earlier) + " and of " + name_of(owner)) +
            " would have the same name, " + text_of(result) +
            "; choose names with more placeholders, such as {folder}, {page} or {plane}");
  }
}

std::string NameRegister::name_of(std::size_t owner) const {
  const Input& input = inputs_[owner];
  return input.is_standard_input() ? "standard input" : text_of(input.path);
}

}  // namespace kv::polarization
