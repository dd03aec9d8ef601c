// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Degree and angle of linear polarization of a rectangle, with their errors and what was left out.
//
//   region FRAME COLUMN ROW WIDTH HEIGHT
#include <kv/image_files.h>
#include <kv/polarization.h>

#include <cstdlib>
#include <iostream>

using namespace kv::polarization;

int main(int count, char** arguments) try {
  if (count != 6)
    throw Fault(FaultKind::argument, "name a frame, a column, a row, a width, a height");
  const Frame frame = open_frames(arguments[1])->read(0);
  const auto number = [&](int index) { return std::atoi(arguments[index]); };
  const SampleSettings settings{.rescue = true,
                                .noise = SensorNoise{.gain = 0.39F, .read_noise = 2.5F}};
  const RegionStatistics light =
      region_statistics(frame, {}, settings, Rectangle{number(2), number(3), number(4), number(5)});

  std::cout << "DoLP  " << light.dolp << " +- " << light.dolp_sigma << '\n'
            << "angle " << light.angle << " +- " << light.angle_sigma << " degrees\n"
            << "S0    " << light.s0 << " +- " << light.s0_sigma << " counts\n"
            << light.cells << " cells, " << light.rescued << " of them rescued; " << light.left_out
            << " left out\n";
} catch (const Fault& fault) {
  std::cerr << fault.what() << '\n';
  return 1;
}
