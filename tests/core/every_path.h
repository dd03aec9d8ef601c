// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gtest/gtest.h>

#include <array>
#include <ostream>
#include <string>

#include "frame.h"
#include "planes.h"
#include "platform/cpu_features.h"
#include "polarization_processor/processor_instance.h"
#include "polarization_processor/routing/kernel_selector.h"

namespace kv::test {

/// Code that can handle a frame: the library's own kernels, or a module called directly. A module
/// is asked for the SSE2 form as well, which it has to give although no processor that can run it
/// needs that form.
struct Path {
  const char* name;
  bool sse41;
  const VectorBackend* (*module)(const PolarizationProcessor& processor);
};

inline const VectorBackend* avx2_module(const PolarizationProcessor& processor) {
  return &processor.avx2_backend;
}
inline const VectorBackend* avx512_module(const PolarizationProcessor& processor) {
  return &processor.avx512_backend;
}

inline constexpr std::array<Path, 6> kPaths{{{"sse2", false, nullptr},
                                             {"sse41", true, nullptr},
                                             {"avx2", true, avx2_module},
                                             {"avx2_as_sse2", false, avx2_module},
                                             {"avx512", true, avx512_module},
                                             {"avx512_as_sse2", false, avx512_module}}};

inline void PrintTo(const Path& path, std::ostream* out) { *out << path.name; }
inline std::string path_name(const testing::TestParamInfo<Path>& info) { return info.param.name; }

inline bool path_available(const Path& path, const PolarizationProcessor& processor) {
  if (path.module != nullptr) return path.module(processor)->usable();
  return !path.sse41 || sse41_available();
}

/// A test that is run on each path. A path that this machine lacks is skipped.
class EveryPath : public testing::TestWithParam<Path> {
 protected:
  void SetUp() override {
    if (path_available(GetParam(), processor_)) return;
    GTEST_SKIP() << "this processor lacks the instructions, or the module is not built";
  }

  bool sse41() const { return GetParam().sse41; }

  void run(const TransformRequest& request, const PhaseView& view) const {
    if (GetParam().module == nullptr) {
      select_kernel(request, view, sse41());
    } else {
      GetParam().module(processor_)->transform(processor_, request, view, sse41());
    }
  }

  Planes run(const Frame& frame, std::uint32_t phase, OutputSet wanted = OutputSet::all()) const {
    Planes planes(frame.samples.size());
    TransformRequest request = request_for(frame, phase);
    planes.hand_to(request, wanted);
    run(request, processor_.phase_views[phase]);
    return planes;
  }

  PolarizationProcessor processor_{CpuTier::baseline};
};

}  // namespace kv::test
