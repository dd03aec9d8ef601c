#include "command_line/calibrate/stack_manifest.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <optional>

#include "kv/polarization/fault.h"

namespace kv::polarization {
namespace {

std::string trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

/// The fields of a line. A quote within quotes is written twice.
std::vector<std::string> fields_of(const std::string& line) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') {
      if (quoted && i + 1 < line.size() && line[i + 1] == '"') {
        fields.back() += '"';
        ++i;
      } else {
        quoted = !quoted;
      }
    } else if (line[i] == ',' && !quoted) {
      fields.emplace_back();
    } else {
      fields.back() += line[i];
    }
  }
  for (std::string& field : fields) field = trimmed(field);
  return fields;
}

std::optional<FrameKind> kind_named(const std::string& name) {
  if (name == "polarized") return FrameKind::polarized;
  if (name == "dark") return FrameKind::dark;
  if (name == "flat") return FrameKind::flat;
  return std::nullopt;
}

class ManifestReader {
 public:
  explicit ManifestReader(const std::filesystem::path& file) : file_(file), stream_(file) {
    if (!stream_) refuse("cannot be opened; check the path, and that you may read it");
  }

  std::vector<ManifestEntry> read() {
    read_names();
    std::vector<ManifestEntry> entries;
    for (std::string line; next_line(line);) entries.push_back(entry_of(fields_of(line)));
    if (entries.empty()) refuse("names no frames; write a line for each file");
    return entries;
  }

 private:
  [[noreturn]] void refuse(const std::string& why) const {
    const std::string place = number_ == 0 ? "" : ", line " + std::to_string(number_);
    throw Fault(FaultKind::file, "the manifest " + file_.string() + place + ": " + why);
  }

  /// The next line that is not left out.
  bool next_line(std::string& line) {
    while (std::getline(stream_, line)) {
      ++number_;
      line = trimmed(line);
      if (number_ == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);  // of spreadsheets
      if (!line.empty() && line[0] != '#') return true;
    }
    return false;
  }

  void read_names() {
    std::string line;
    if (next_line(line)) names_ = fields_of(line);
    for (const char* name : {"file", "kind"}) {
      if (std::ranges::find(names_, name) == names_.end()) {
        refuse("its first line has no column '" + std::string(name) +
               "'; it must be file,kind,angle");
      }
    }
  }

  /// Empty where the line ends before that column.
  std::string field(const std::vector<std::string>& fields, const char* name) const {
    const auto index = static_cast<std::size_t>(std::ranges::find(names_, name) - names_.begin());
    return index < fields.size() ? fields[index] : "";
  }

  ManifestEntry entry_of(const std::vector<std::string>& fields) const {
    ManifestEntry entry;
    entry.name = field(fields, "file");
    if (entry.name.empty()) refuse("there is no file; name one");
    entry.file = file_.parent_path() / entry.name;
    const std::string kind = field(fields, "kind");
    const auto known = kind_named(kind);
    if (!known) refuse("the kind is '" + kind + "'; it must be polarized, dark or flat");
    entry.kind = *known;
    if (entry.kind == FrameKind::polarized) entry.angle = angle_of(field(fields, "angle"));
    return entry;
  }

  double angle_of(const std::string& text) const {
    double angle = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), angle);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(angle)) {
      refuse("the angle is '" + text +
             "'; a polarized frame needs one in degrees, such as 35 or 2.5");
    }
    return angle;
  }

  std::filesystem::path file_;
  std::ifstream stream_;
  int number_ = 0;
  std::vector<std::string> names_;
};

}  // namespace

std::vector<ManifestEntry> read_manifest(const std::filesystem::path& file) {
  return ManifestReader(file).read();
}

}  // namespace kv::polarization
