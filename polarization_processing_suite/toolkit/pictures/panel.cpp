// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/pictures/panel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>

#include "toolkit/pictures/colour_spaces.h"
#include "toolkit/pictures/glyphs.h"
#include "toolkit/pictures/paint.h"

namespace kv::polarization {
namespace {

// In dots.
constexpr int kGap = 6;
constexpr int kWheelRadius = 32;
constexpr int kWheelHeight = 84;
constexpr int kWheelCentre = 46;  // more room above it, for the labels
constexpr int kBarWidth = 16;
constexpr int kBarHeight = 100;
constexpr int kSwatchSize = 9;

/// Lays contents out from the top down, and draws them where there is a picture.
class PanelWriter {
 public:
  PanelWriter(Picture* picture, int left, int scale)
      : picture_(picture), left_(left), scale_(scale) {}

  /// Of what has been laid out, in dots.
  int height() const { return top_; }

  void skip(int dots) { top_ += dots; }

  void text(std::string_view text, int indent = 0) {
    for (const std::string& line : wrapped(text, kLineSigns - (indent + 5) / kGlyphAdvance)) {
      if (picture_) {
        draw_text(*picture_, line, column(kMargin + indent), row(0), scale_, kTextColour);
      }
      top_ += kLineAdvance;
    }
  }

  void scale(const AngleWheel& wheel) {
    if (picture_) draw_wheel(wheel.style);
    top_ += kWheelHeight;
  }

  void scale(const ScaleBar& bar) {
    if (picture_) draw_bar(bar);
    top_ += kBarHeight + kLineAdvance;
  }

  void scale(const Swatches& swatches) {
    for (const Swatch& swatch : swatches) {
      if (picture_) {
        fill(*picture_, {column(kMargin), row(-1), kSwatchSize * scale_, kSwatchSize * scale_},
             swatch.colour);
      }
      text(swatch.text, kSwatchSize + 3);
      skip(2);
    }
  }

 private:
  int column(int dots) const { return left_ + dots * scale_; }
  int row(int dots) const { return (top_ + dots) * scale_; }

  void draw_wheel(AngleStyle style) {
    const int radius = kWheelRadius * scale_;
    const int centre_column = column(kPanelWidth / 2);
    const int centre_row = row(kWheelCentre);
    for (int up = -radius - 1; up <= radius + 1; ++up) {
      for (int right = -radius - 1; right <= radius + 1; ++right) {
        const double distance = std::hypot(right, up);
        // The rim is smoothed over one pixel.
        const double coverage = radius + 0.5 - distance;
        if (coverage <= 0.0) continue;
        const Colour pure =
            angle_colour(style.hues, std::atan2(up, right) * 180.0 / std::numbers::pi);
        cover(*picture_, centre_column + right, centre_row - up,
              mixed(pure, style.unpolarized, to_byte(distance / radius)), coverage);
      }
    }
    for (const int degrees : {0, 45, 90, 135}) {
      draw_angle_label(centre_column, centre_row, degrees);
    }
  }

  void draw_angle_label(int centre_column, int centre_row, int degrees) {
    const std::string text = std::to_string(degrees) + std::string(kDegreeSign);
    const double angle = degrees * std::numbers::pi / 180.0;
    // Half the text's extent in this direction keeps the text clear of the rim.
    const double reach = (kWheelRadius + 3.0) * scale_ +
                         std::abs(std::cos(angle)) * text_width(text, scale_) / 2.0 +
                         std::abs(std::sin(angle)) * kGlyphHeight * scale_ / 2.0;
    draw_text_centred(
        *picture_, text, centre_column + static_cast<int>(std::lround(reach * std::cos(angle))),
        centre_row - static_cast<int>(std::lround(reach * std::sin(angle))), scale_, kTextColour);
  }

  /// The bar's ends stand at the middles of the outer marks' lines.
  void draw_bar(const ScaleBar& bar) {
    const int height = kBarHeight * scale_;
    const int top = row(0) + kGlyphHeight * scale_ / 2;
    const int count = static_cast<int>(bar.colours.size());
    for (int i = 0; i < height; ++i) {
      const int place = (2 * (height - 1 - i) + 1) * count / (2 * height);
      fill(*picture_, {column(kMargin), top + i, kBarWidth * scale_, 1},
           bar.colours[static_cast<std::size_t>(place)]);
    }
    for (int i = 0; i < 3; ++i) {
      const int centre = kBarHeight - i * kBarHeight / 2;
      fill(*picture_,
           {column(kMargin + kBarWidth), top + centre * scale_ - scale_ / 2, 3 * scale_, scale_},
           kTextColour);
      draw_text(*picture_, bar.marks[static_cast<std::size_t>(i)], column(kMargin + kBarWidth + 6),
                row(centre), scale_, kTextColour);
    }
  }

  Picture* picture_;
  int left_;
  int scale_;
  int top_ = kMargin;
};

void lay_out(const Legend& legend, PanelWriter& writer) {
  if (!legend.title.empty()) {
    writer.text(legend.title);
    writer.skip(kGap);
  }
  std::visit([&writer](const auto& scale) { writer.scale(scale); }, legend.scale);
  for (const std::string& note : legend.notes) {
    writer.skip(kGap);
    writer.text(note);
  }
  writer.skip(kMargin - (kLineAdvance - kGlyphHeight));
}

}  // namespace

int panel_height(const Legend& legend) {
  PanelWriter ruler(nullptr, 0, 1);
  lay_out(legend, ruler);
  return ruler.height();
}

void draw_panel(Picture& picture, int left, int scale, const Legend& legend) {
  fill(picture, {left, 0, picture.width - left, picture.height}, kPanelColour);
  PanelWriter writer(&picture, left, scale);
  lay_out(legend, writer);
}

std::vector<std::string> wrapped(std::string_view text, int signs) {
  const auto limit = static_cast<std::size_t>(signs);
  std::vector<std::string> lines;
  while (text_width(text, 1) > text_width(std::string(limit, ' '), 1)) {
    const std::size_t blank = text.substr(0, limit + 1).rfind(' ');
    const bool broken = blank == std::string_view::npos || blank == 0;
    lines.emplace_back(text.substr(0, broken ? limit : blank));
    text.remove_prefix(broken ? limit : blank + 1);
  }
  lines.emplace_back(text);
  return lines;
}

std::string short_number(double value) {
  char text[16];
  std::snprintf(text, sizeof text, "%.3g", value);
  return text;
}

}  // namespace kv::polarization
