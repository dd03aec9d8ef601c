// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace kv::polarization {

/// How far the samples of a sensor scatter. Both numbers are on the data sheet, or come from a
/// photon transfer measurement (EMVA 1288).
struct SensorNoise {
  float gain = 0;        ///< counts per electron, above 0
  float read_noise = 0;  ///< electrons, standard deviation of a sample in the dark, from 0 up

  /// Of samples in the dark, in squared counts: readout, and rounding to whole counts.
  constexpr float dark_variance() const {
    const float counts = gain * read_noise;
    return counts * counts + 1.0f / 12;
  }

  /// In squared counts, of a sample that is so many counts above the black level. A sample below
  /// black holds no light.
  constexpr float variance(float counts) const {
    return gain * (counts > 0 ? counts : 0) + dark_variance();
  }
};

}  // namespace kv::polarization
