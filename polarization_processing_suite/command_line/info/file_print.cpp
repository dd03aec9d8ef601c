// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "command_line/info/file_print.h"

#include <cmath>

#include "command_line/json_output.h"
#include "command_line/messages.h"
#include "command_line/number_text.h"
#include "kv/image_files/image_format.h"

namespace kv::polarization {
namespace {

constexpr std::array kPlaceNames{"top left", "top right", "bottom left", "bottom right"};

/// A line with what it tells of in a column of its own.
std::string line(const std::string& name, const std::string& text) {
  return "  " + name + std::string(name.size() < 14 ? 14 - name.size() : 1, ' ') + text + "\n";
}

std::string counted(std::size_t count, const std::string& thing) {
  return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string place_lines(const PageReport& page, const std::optional<Mosaic>& mosaic) {
  std::string lines =
      formatted("  %-20s%8s%10s%8s%15s\n", "samples", "least", "mean", "most", "at full scale");
  for (std::size_t i = 0; i < kPlaceNames.size(); ++i) {
    std::string name = kPlaceNames[i];
    if (mosaic) name += ", " + std::to_string(cell_angles(*mosaic)[i]);
    const PlaceFacts& place = page.facts.places[i];
    lines += formatted("    %-18s%8d%10.1f%8d%15zu\n", name.c_str(), place.least, place.mean,
                       place.greatest, place.at_full_scale);
  }
  return lines;
}

std::string diagonal_line(const FrameFacts& facts) {
  if (std::isnan(facts.diagonal_difference)) {
    return line("redundancy", "no cell is between black and full scale");
  }
  return line("redundancy",
              formatted("the diagonals differ by %+.2f per cent of S0, which scatters by %.1f from "
                        "cell to cell",
                        100 * facts.diagonal_difference, 100 * facts.diagonal_spread));
}

std::string page_lines(const PageReport& page, const std::optional<Mosaic>& mosaic) {
  const FrameFacts& facts = page.facts;
  std::string lines = line("size", formatted("%d x %d pixels", page.width, page.height));
  lines += line("bit depth", formatted("%d; the greatest sample, %d, needs %d", page.bit_depth,
                                       facts.greatest, facts.bits_used));
  lines += line("low bits", facts.unused_low_bits == 0
                                ? "all in use"
                                : counted(static_cast<std::size_t>(facts.unused_low_bits), "bit") +
                                      " without use");
  return lines + place_lines(page, mosaic) + diagonal_line(facts);
}

std::string guess_lines(const std::vector<ShapeGuess>& guesses) {
  std::string lines;
  for (const ShapeGuess& guess : guesses) {
    lines += line(lines.empty() ? "may be" : "",
                  counted(static_cast<std::size_t>(guess.frames), "frame") + ", " +
                      options_of(guess.shape) + formatted("  (roughness %.3f)", guess.roughness));
  }
  return lines;
}

/// JSON has no NaN.
Json number_or_null(double number) { return std::isfinite(number) ? Json(number) : Json(nullptr); }

Json json_of(const PageReport& page, const std::optional<Mosaic>& mosaic) {
  const FrameFacts& facts = page.facts;
  Json json;
  json["page"] = page.page + 1;
  json["pages"] = page.pages;
  json["width"] = page.width;
  json["height"] = page.height;
  json["bit_depth"] = page.bit_depth;
  json["greatest_sample"] = facts.greatest;
  json["bits_used"] = facts.bits_used;
  json["unused_low_bits"] = facts.unused_low_bits;
  json["at_full_scale"] = facts.at_full_scale;
  json["above_full_scale"] = facts.above_full_scale;
  for (std::size_t i = 0; i < kPlaceNames.size(); ++i) {
    const PlaceFacts& place = facts.places[i];
    Json entry;
    entry["place"] = kPlaceNames[i];
    if (mosaic) entry["polarizer"] = cell_angles(*mosaic)[i];
    entry["least"] = place.least;
    entry["mean"] = place.mean;
    entry["greatest"] = place.greatest;
    entry["at_full_scale"] = place.at_full_scale;
    json["classes"].push_back(std::move(entry));
  }
  json["diagonal_difference"] = number_or_null(facts.diagonal_difference);
  json["diagonal_spread"] = number_or_null(facts.diagonal_spread);
  return json;
}

Json json_of(const ShapeGuess& guess) {
  Json json;
  json["width"] = guess.shape.width;
  json["height"] = guess.shape.height;
  json["raw_format"] = traits_of(guess.shape.pixel_format).name;
  json["frames"] = guess.frames;
  json["roughness"] = guess.roughness;
  return json;
}

std::string present_or(const std::filesystem::path& file, const std::string& absence) {
  return file.empty() ? absence : printable(file);
}

}  // namespace

std::string lines_of(const FileReport& report, const std::optional<Mosaic>& mosaic) {
  std::string lines = printable(report.file) + "\n";
  std::string format = report.format.empty() ? "headerless" : report.format;
  format += ", " + std::to_string(report.bytes) + " bytes";
  if (report.page && report.page->pages > 1) {
    format += ", " + std::to_string(report.page->pages) + " pages, of which page " +
              std::to_string(report.page->page + 1) + " was looked at";
  }
  lines += line("format", format);
  if (report.page) lines += page_lines(*report.page, mosaic);
  lines += guess_lines(report.guesses);
  if (!report.provenance.empty()) lines += line("made by", printable(report.provenance));
  for (const std::string& odd : report.odd) lines += line("odd", printable(odd));
  return lines;
}

Json json_of(const FileReport& report, const std::optional<Mosaic>& mosaic) {
  Json json;
  json["file"] = json_of(report.file);
  json["format"] = report.format.empty() ? "raw" : report.format;
  json["bytes"] = report.bytes;
  json["frame"] = report.page ? json_of(*report.page, mosaic) : Json(nullptr);
  json["may_be"] = Json::array();
  for (const ShapeGuess& guess : report.guesses) json["may_be"].push_back(json_of(guess));
  if (!report.provenance.empty()) json["provenance"] = report.provenance;
  json["odd"] = report.odd;
  return json;
}

std::string lines_of(const Machine& machine) {
  std::string lines = line("version", KV_VERSION);
  lines += line("library", present_or(machine.library, "its file cannot be told"));
  lines += line("processor", (machine.processor.empty() ? "without a name" : machine.processor) +
                                 ", " + counted(machine.cores, "core"));
  lines += line("kernels", std::string(traits_of(machine.kernels).title));
  if (machine.tier != CpuTier::baseline) {
    std::string module = present_or(
        machine.module, module_file_name(machine.tier) + " is not found beside the library");
    if (!machine.module.empty() && !machine.module_can_run) {
      module += ", which the operating system does not let run";
    }
    lines += line("vector module", module);
  }
  lines += line("logger", present_or(machine.logger, "not found, and not needed"));
  if (!machine.logger.empty()) {
    lines +=
        line("", "configured by " + present_or(machine.logger_configuration, "its own defaults"));
  }
  for (const ImageFormatTraits& traits : image_formats()) {
    const std::string_view text = traits.available() ? traits.summary : traits.missing;
    lines += line(std::string(traits.name), std::string(text));
  }
  return lines;
}

}  // namespace kv::polarization
