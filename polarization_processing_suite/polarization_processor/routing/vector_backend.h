// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#include "platform/optional_library.h"
#include "polarization_processor/records/coefficient_set.h"
#include "polarization_processor/records/transform_request.h"

struct PolarizationProcessor;

namespace kv {

/// File stem and exports of an optional vector module.
struct VectorModuleNames {
  const char* library_stem;
  const char* initialize;
  const char* transform;
  const char* terminate;
};

extern const VectorModuleNames kAvx512Module;
extern const VectorModuleNames kAvx2Module;

/// An optional module that fills the planes of a whole frame as the library's own kernels would,
/// byte for byte. Its absence or refusal is no error. Whether it is usable is settled at
/// construction.
class VectorBackend {
 public:
  /// Zero is success.
  using Initialize = std::int32_t (*)();
  using Transform = void (*)(const TransformRequest* request, const PhaseView* view,
                             bool sse41_available, const PolarizationProcessor* instance);
  using Terminate = void (*)();

  /// Lets out what a lack of memory or the module's own initialize throws.
  explicit VectorBackend(const VectorModuleNames& names);
  ~VectorBackend();
  VectorBackend(const VectorBackend&) = delete;
  VectorBackend& operator=(const VectorBackend&) = delete;

  bool usable() const { return !failed_; }

  void transform(const PolarizationProcessor& instance, const TransformRequest& request,
                 const PhaseView& view, bool sse41_available) const {
    transform_(&request, &view, sse41_available, &instance);
  }

 private:
  platform::LibraryHandle module_ = nullptr;
  bool failed_ = true;
  Initialize initialize_ = nullptr;
  Transform transform_ = nullptr;
  Terminate terminate_ = nullptr;
};

}  // namespace kv
