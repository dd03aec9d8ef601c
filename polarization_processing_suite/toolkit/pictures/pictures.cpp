#include "toolkit/pictures/pictures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

#include "toolkit/pictures/hue.h"
#include "toolkit/pictures/legend.h"

namespace kv::polarization {
namespace {

std::uint8_t to_byte(double zero_to_one) {
  return static_cast<std::uint8_t>(std::lround(255.0 * std::clamp(zero_to_one, 0.0, 1.0)));
}

/// Encodes linear light from 0 to 1 as IEC 61966-2-1 defines it.
double srgb_encoded(double linear) {
  return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
}

std::vector<std::uint16_t> means_of_neighbours(const Frame& frame) {
  const auto width = static_cast<std::size_t>(frame.width);
  const auto height = static_cast<std::size_t>(frame.height);
  std::vector<std::uint16_t> means(frame.samples.size());
  for (std::size_t row = 0; row < height; ++row) {
    const std::uint16_t* own = &frame.samples[row * width];
    const std::uint16_t* other = row + 1 < height ? own + width : own - width;
    std::uint16_t* mean = &means[row * width];
    for (std::size_t column = 0; column + 1 < width; ++column) {
      mean[column] = static_cast<std::uint16_t>(
          (own[column] + own[column + 1] + other[column] + other[column + 1] + 2) / 4);
    }
    mean[width - 1] = mean[width - 2];
  }
  return means;
}

/// The lowest level that at most one pixel in 500 exceeds; at least 1.
std::size_t white_level(const std::vector<std::uint16_t>& levels) {
  std::vector<std::size_t> histogram(65536);
  for (const std::uint16_t level : levels) ++histogram[level];
  const std::size_t allowed = levels.size() / 500;
  std::size_t white = 65535;
  for (std::size_t above = 0; white > 1; --white) {
    above += histogram[white];
    if (above > allowed) break;
  }
  return white;
}

/// A byte for every value of a plane.
template <class Value>
std::vector<std::uint8_t> byte_table(Value value_of) {
  std::vector<std::uint8_t> table(65536);
  for (std::size_t i = 0; i < table.size(); ++i)
    table[i] = to_byte(value_of(static_cast<double>(i)));
  return table;
}

std::vector<std::uint8_t> dolp_table(std::uint16_t output_max, double dolp_white) {
  return byte_table([=](double dolp) { return dolp / (output_max * dolp_white); });
}

Picture grey_picture(int width, int height, std::span<const std::uint16_t> values,
                     const std::vector<std::uint8_t>& table) {
  Picture picture(width, height, 1);
  std::transform(values.begin(), values.end(), picture.bytes.begin(),
                 [&table](std::uint16_t value) { return table[value]; });
  return picture;
}

/// The pure colour of every value of the azimuth plane, whose 0 to output_max are -90 to +90
/// degrees.
std::vector<Colour> colour_table(std::uint16_t output_max) {
  std::vector<Colour> table(std::size_t{output_max} + 1);
  for (std::size_t i = 0; i < table.size(); ++i) {
    const auto hue = hue_of_angle(static_cast<double>(i) * 180.0 / output_max - 90.0);
    std::transform(hue.begin(), hue.end(), table[i].begin(), to_byte);
  }
  return table;
}

}  // namespace

Picture intensity_picture(const Frame& frame) {
  const std::vector<std::uint16_t> means = means_of_neighbours(frame);
  const auto white = static_cast<double>(white_level(means));
  const auto table =
      byte_table([white](double level) { return srgb_encoded(std::min(level / white, 1.0)); });
  return grey_picture(frame.width, frame.height, means, table);
}

Picture dolp_picture(const Planes& planes, double dolp_white) {
  return grey_picture(planes.width(), planes.height(), planes.levels(Plane::dolp),
                      dolp_table(planes.output_max(), dolp_white));
}

Picture angle_picture(const Planes& planes, double dolp_white) {
  const std::vector<Colour> colours = colour_table(planes.output_max());
  const std::vector<std::uint8_t> values = dolp_table(planes.output_max(), dolp_white);
  const int legend_width = angle_legend_width(planes.height());
  Picture picture(planes.width() + legend_width, planes.height(), 3);
  const std::uint16_t* azimuth = planes.levels(Plane::azimuth).data();
  const std::uint16_t* dolp = planes.levels(Plane::dolp).data();
  for (int row = 0; row < planes.height(); ++row) {
    std::uint8_t* out = picture.pixel(0, row);
    for (int column = 0; column < planes.width(); ++column, ++azimuth, ++dolp, out += 3) {
      const Colour& colour = colours[*azimuth];
      const unsigned value = values[*dolp];
      for (std::size_t i = 0; i < 3; ++i) {
        out[i] = static_cast<std::uint8_t>((colour[i] * value + 127) / 255);
      }
    }
  }
  if (legend_width > 0) draw_angle_legend(picture, planes.width(), dolp_white);
  return picture;
}

}  // namespace kv::polarization
