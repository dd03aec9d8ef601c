#include "command_line/transform/output_names.h"

#include <system_error>
#include <utility>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

std::filesystem::path identity_of(const std::filesystem::path& path) {
  std::error_code failure;
  const auto canonical = std::filesystem::weakly_canonical(path, failure);
  return failure ? path : canonical;
}

std::string page_suffix(std::size_t page, std::size_t pages) {
  if (pages == 1) return "";
  std::string number = std::to_string(page + 1);
  number.insert(0, std::to_string(pages).size() - number.size(), '0');
  return "_" + number;
}

}  // namespace

OutputNames::OutputNames(std::filesystem::path folder,
                         const std::vector<std::filesystem::path>& inputs)
    : folder_(std::move(folder)) {
  for (const auto& input : inputs) inputs_.insert(identity_of(input));
}

std::string OutputNames::stem_for(const std::filesystem::path& input, std::size_t page,
                                  std::size_t pages) {
  std::string stem = input.stem().string() + page_suffix(page, pages);
  const auto [owner, is_new] = taken_.emplace(stem, input);
  if (!is_new) {
    throw Fault(FaultKind::argument,
                "its results would replace those of " + owner->second.string() +
                    ", which have the same names; transform it into another folder");
  }
  return stem;
}

std::filesystem::path OutputNames::path_for(const std::string& file_name) const {
  std::filesystem::path path = folder_ / file_name;
  if (inputs_.contains(identity_of(path))) {
    throw Fault(FaultKind::argument, "its result " + path.string() +
                                         " would replace an input; choose another folder with -o");
  }
  return path;
}

}  // namespace kv::polarization
