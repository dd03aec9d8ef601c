// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "opencv_baseline.h"

#include <numbers>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace kv::bench {

struct OpencvBaseline::Buffers {
  cv::Mat colours_0_90, colours_45_135;
  cv::Mat samples;
  cv::Mat i0, i45, i90, i135;
  cv::Mat s0, s1, s2;
  cv::Mat angle, length, dolp;
};

OpencvBaseline::OpencvBaseline() : buffers_(std::make_unique<Buffers>()) { cv::setNumThreads(1); }
OpencvBaseline::~OpencvBaseline() = default;

const char* OpencvBaseline::missing() { return nullptr; }

void OpencvBaseline::operator()(const TransformRequest& request) {
  Buffers& b = *buffers_;
  const auto plane = [&](const std::uint16_t* data) {
    return cv::Mat(static_cast<int>(request.height), static_cast<int>(request.width), CV_16UC1,
                   const_cast<std::uint16_t*>(data));
  };
  const auto as_float = [&](const cv::Mat& colours, int channel, cv::Mat& to) {
    cv::extractChannel(colours, b.samples, channel);
    b.samples.convertTo(to, CV_32F);
  };

  // The cell 0 135 / 45 90 read as red green / green blue, then as green red / blue green. The
  // patterns are named after the cell one row and one column further.
  constexpr int kBlue = 0;
  constexpr int kRed = 2;
  const cv::Mat mosaic = plane(request.input);
  cv::cvtColor(mosaic, b.colours_0_90, cv::COLOR_BayerBG2BGR);
  cv::cvtColor(mosaic, b.colours_45_135, cv::COLOR_BayerGB2BGR);
  as_float(b.colours_0_90, kRed, b.i0);
  as_float(b.colours_0_90, kBlue, b.i90);
  as_float(b.colours_45_135, kRed, b.i135);
  as_float(b.colours_45_135, kBlue, b.i45);

  cv::add(b.i0, b.i90, b.s0);
  cv::subtract(b.i0, b.i90, b.s1);
  cv::subtract(b.i45, b.i135, b.s2);

  cv::Mat intensity = plane(request.intensity);
  cv::Mat azimuth = plane(request.azimuth);
  cv::Mat dolp = plane(request.dolp);
  const double full_scale = request.output_max_int;
  b.s0.convertTo(intensity, CV_16U);

  // OpenCV's angle is from 0 to 2 pi, and that of the polarization half of it, from 0 to 180.
  cv::phase(b.s1, b.s2, b.angle);
  b.angle.convertTo(azimuth, CV_16U, full_scale / (2 * std::numbers::pi));

  cv::magnitude(b.s1, b.s2, b.length);
  cv::divide(b.length, b.s0, b.dolp);
  b.dolp.convertTo(dolp, CV_16U, full_scale);
}

}  // namespace kv::bench
