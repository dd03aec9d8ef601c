// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/info/info_command.h"

#include <iostream>
#include <new>

#include "command_line/exit_status.h"
#include "command_line/info/file_print.h"
#include "command_line/json_output.h"
#include "command_line/machine/machine_json.h"
#include "command_line/messages.h"
#include "kv/image_files/image_format.h"
#include "kv/polarization/fault.h"
#include "platform/process.h"

namespace kv::polarization {
namespace {

Json json_of_installation(const Machine& machine) {
  Json json;
  json["version"] = KV_VERSION;
  json["build"] = json_of(this_build());
  json["machine"] = json_of(machine);
  for (const ImageFormatTraits& traits : image_formats()) {
    json["formats"][std::string(traits.name)] = traits.available();
  }
  return json;
}

class FilesInfo {
 public:
  explicit FilesInfo(const InfoOptions& options) : options_(options) {}

  int run() {
    for (const auto& file : options_.files) {
      if (platform::interrupted()) break;
      try {
        tell(look_at(file, options_.question));
      } catch (const Fault& fault) {
        fail(file, fault.what());
      } catch (const std::bad_alloc&) {
        fail(file, "there is not enough memory for this frame");
      }
    }
    if (options_.json) {
      Json json;
      json["files"] = files_;
      std::cout << text_of(json) << std::flush;
    }
    if (platform::interrupted()) return exit_interrupted;
    if (failures_ == 0) return exit_success;
    return failures_ == options_.files.size() ? exit_nothing_done : exit_some_failed;
  }

 private:
  void tell(const FileReport& report) {
    const auto& mosaic = options_.question.mosaic;
    if (options_.json) {
      files_.push_back(json_of(report, mosaic));
    } else {
      std::cout << lines_of(report, mosaic) << std::flush;
    }
  }

  void fail(const std::filesystem::path& file, const std::string& reason) {
    complain(file.string() + ": " + reason);
    ++failures_;
  }

  const InfoOptions& options_;
  Json files_ = Json::array();
  std::size_t failures_ = 0;
};

}  // namespace

int run_info(const InfoOptions& options) {
  if (!options.files.empty()) return FilesInfo(options).run();
  const Machine machine = look_at_machine();
  std::cout << (options.json ? text_of(json_of_installation(machine)) : lines_of(machine))
            << std::flush;
  return exit_success;
}

}  // namespace kv::polarization
