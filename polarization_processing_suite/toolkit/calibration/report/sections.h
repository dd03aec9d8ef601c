// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>

#include "toolkit/calibration/report/html_writer.h"
#include "toolkit/calibration/report/pixel_properties.h"

namespace kv::polarization {

// The parts of the page, in its order.

/// Those of kPixelProperties, class by class.
using PropertySamples = std::array<std::array<PropertySample, 4>, 3>;

void add_summary(HtmlWriter& page, const Calibration& calibration);
void add_findings(HtmlWriter& page, const Calibration& calibration);
void add_measurement_errors(HtmlWriter& page, const Calibration& calibration,
                            const PropertySamples& samples);
void add_classes(HtmlWriter& page, const Calibration& calibration);
void add_histograms(HtmlWriter& page, const PropertySamples& samples);
void add_maps(HtmlWriter& page, const Calibration& calibration, const PropertySamples& samples);
void add_bad_pixels(HtmlWriter& page, const Calibration& calibration);
void add_noise(HtmlWriter& page, const Calibration& calibration);
void add_frames(HtmlWriter& page, const Calibration& calibration);
void add_glossary(HtmlWriter& page);

/// The row that names a table's columns, which printers repeat.
void add_headings(HtmlWriter& page, std::initializer_list<std::string_view> headings);

/// A table that can be wider than a phone: it is scrolled by itself. The first column names the
/// row.
class Table {
 public:
  Table(HtmlWriter& page, std::initializer_list<std::string_view> headings);

  void row(std::initializer_list<std::string_view> cells);

 private:
  HtmlWriter& page_;
  HtmlWriter::Element frame_;
  HtmlWriter::Element table_;
};

}  // namespace kv::polarization
