// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Planes, quality flags and errors of one frame, on all cores.
//
//   one_frame FRAME.npy FOLDER
#include <kv/image_files.h>
#include <kv/polarization.h>

#include <iostream>

using namespace kv::polarization;

int main(int count, char** arguments) try {
  if (count != 3)
    throw Fault(FaultKind::argument, "name a frame file and a folder for the results");
  const std::filesystem::path folder = arguments[2];
  const Frame frame = open_frames(arguments[1])->read(0);

  Planes planes;
  planes.reshape(frame.width, frame.height, OutputSet::all());
  Processor(0).transform(frame, {}, planes.views());

  Maps maps;
  maps.reshape(frame.width, frame.height, MapSet(Map::dolp, Map::dolp_sigma, Map::quality));
  const SensorNoise noise{.gain = 0.39F, .read_noise = 2.5F};
  MapMaker(0).fill(frame, {}, {.samples = {.rescue = true, .noise = noise}}, maps.views());

  save_image(folder / "normalized_stokes.npy",
             FloatImage{frame.width, frame.height, 2, planes.normalized_stokes()});
  save_image(folder / "dolp.npy", FloatImage{frame.width, frame.height, 1, maps.values(Map::dolp)});
  save_image(folder / "dolp_sigma.npy",
             FloatImage{frame.width, frame.height, 1, maps.values(Map::dolp_sigma)});
  const auto doubted = std::ranges::count_if(maps.quality(), quality::is_unusable);
  std::cout << frame.width << " x " << frame.height << " pixels, " << doubted
            << " not to be used\n";
} catch (const Fault& fault) {
  std::cerr << fault.what() << '\n';
  return 1;
}
