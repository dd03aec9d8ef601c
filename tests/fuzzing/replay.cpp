// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

// Runs the files that are named, and all files of folders that are, through a target: a fuzzer's
// main where there is no libFuzzer.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

int files = 0;

void replay(const std::filesystem::path& file) {
  // What ends the process is told by the last line. Standard output may be a target's.
  std::fprintf(stderr, "%s\n", file.c_str());
  std::ifstream stream(file, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
  // Of its size exactly, so that sanitizers see a read behind its end.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  ++files;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> paths;
  // A target may change the working folder.
  for (int i = 1; i < argc; ++i) paths.push_back(std::filesystem::absolute(argv[i]));
  LLVMFuzzerInitialize(&argc, &argv);
  for (const auto& path : paths) {
    if (!std::filesystem::is_directory(path)) {
      replay(path);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(path)) replay(entry.path());
  }
  std::fprintf(stderr, "%d inputs\n", files);
  return files > 0 ? 0 : 1;
}
