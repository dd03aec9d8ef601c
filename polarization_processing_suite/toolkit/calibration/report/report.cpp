// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "kv/calibration/report.h"

#include "kv/image_files/pending_file.h"
#include "kv/polarization/fault.h"
#include "kv/polarization/frame.h"
#include "toolkit/calibration/report/html_writer.h"
#include "toolkit/calibration/report/sections.h"
#include "toolkit/calibration/report/style.h"

namespace kv::polarization {
namespace {

void check(const Calibration& calibration) {
  const int width = calibration.width;
  const int height = calibration.height;
  const std::string size = std::to_string(width) + " x " + std::to_string(height) + " pixels";
  if (width < 2 || height < 2 || width % 2 != 0 || height % 2 != 0) {
    throw Fault(FaultKind::argument,
                "a calibration of " + size + " cannot be reported; both must be even and above 0");
  }
  const auto check_map = [&](std::size_t values) {
    if (values == pixel_count(width, height)) return;
    throw Fault(FaultKind::argument, "a map of a calibration has " + std::to_string(values) +
                                         " values; all need one for each of the " + size);
  };
  for (const PixelProperty& property : kPixelProperties) {
    check_map((calibration.maps.*property.values).size());
    check_map((calibration.maps.*property.errors).size());
  }
  check_map(calibration.maps.bad.size());
}

void add_head(HtmlWriter& page, const Calibration& calibration) {
  const auto head = page.open("head");
  page.empty("meta", {{"charset", "utf-8"}});
  page.empty("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  // Holds browsers to the page's promise, whatever might slip into it.
  page.empty("meta", {{"http-equiv", "Content-Security-Policy"},
                      {"content", "default-src 'none'; img-src data:; style-src 'unsafe-inline'"}});
  page.element("title", "Calibration of " + (calibration.camera.empty()
                                                 ? std::string("a polarization camera")
                                                 : shortened(calibration.camera)));
  const auto style = page.open("style");
  page.literal(kReportStyle);
}

}  // namespace

std::string calibration_report(const Calibration& calibration) {
  check(calibration);
  PropertySamples samples;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = samples_of(calibration, kPixelProperties[i]);
  }
  HtmlWriter page;
  page.literal("<!DOCTYPE html>\n");
  {
    const auto html = page.open("html", {{"lang", "en"}});
    add_head(page, calibration);
    const auto body = page.open("body");
    add_summary(page, calibration);
    add_findings(page, calibration);
    add_measurement_errors(page, calibration, samples);
    add_classes(page, calibration);
    add_histograms(page, samples);
    add_maps(page, calibration, samples);
    add_bad_pixels(page, calibration);
    add_noise(page, calibration);
    add_frames(page, calibration);
    add_glossary(page);
  }
  return page.take();
}

void save_calibration_report(const std::filesystem::path& path, const Calibration& calibration) {
  const std::string page = calibration_report(calibration);
  PendingFile file(path);
  file.write(page.data(), page.size());
  file.close();
  file.publish();
}

}  // namespace kv::polarization
