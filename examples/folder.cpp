// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Angle and DoLP planes, and an angle picture, of every frame of a folder, a frame on each core.
//
//   folder FRAMES RESULTS
#include <kv/image_files.h>
#include <kv/pictures.h>
#include <kv/polarization.h>

#include <filesystem>
#include <iostream>
#include <mutex>
#include <vector>

using namespace kv::polarization;

namespace {

void transform_file(Processor& processor, const std::filesystem::path& file,
                    const std::filesystem::path& results) {
  // Kept by each thread, so that frame after frame goes through the same memory.
  thread_local Frame frame;
  thread_local Planes planes;
  thread_local PictureSource pictures;

  open_frames(file)->read(0, frame);
  planes.reshape(frame.width, frame.height, OutputSet(Plane::azimuth, Plane::dolp));
  processor.transform(frame, {}, planes.views());
  for (const Plane plane : {Plane::azimuth, Plane::dolp}) {
    const std::string name = file.stem().string() + "_" + std::string(traits_of(plane).name);
    save_image(results / (name + ".npy"),
               GreyImage{frame.width, frame.height, 16, planes.levels(plane)});
  }

  pictures.fill(processor, frame, {});
  const PictureMaps maps = pictures.maps();
  save_image(
      results / (file.stem().string() + "_angle" +
                 std::string(ending_of(preferred_format(ImageKind::picture), ImageKind::picture))),
      picture_of(PictureKind::angle, maps, ranges_of(maps)));
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 3) throw Fault(FaultKind::argument, "name a folder of frames and one for results");
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::size_t failures = 0;
  std::mutex mutex;
  for_each_frame(files.size(), [&](Processor& processor, std::size_t index) {
    try {
      transform_file(processor, files[index], arguments[2]);
    } catch (const Fault& fault) {  // a bad file must not end the night's work
      const std::lock_guard lock(mutex);
      std::cerr << files[index].string() << ": " << fault.what() << '\n';
      ++failures;
    }
  });
  std::cout << files.size() - failures << " of " << files.size() << " frames\n";
  return failures == 0 ? 0 : 1;
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
