// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#include "toolkit/machine/build.h"

#include <algorithm>

#include "toolkit/machine/machine.h"

namespace kv::polarization {
namespace {

/// Of "name=1.2,other=3.4"; what has no sign of equality is a name alone.
NamedTexts named_texts(std::string_view list) {
  NamedTexts texts;
  while (!list.empty()) {
    const std::string_view entry = list.substr(0, list.find(','));
    const std::size_t cut = std::min(entry.rfind('='), entry.size());
    texts.emplace_back(entry.substr(0, cut), entry.substr(std::min(cut + 1, entry.size())));
    list.remove_prefix(std::min(entry.size() + 1, list.size()));
  }
  return texts;
}

}  // namespace

const Build& this_build() {
  static const Build build{
      .version = KV_VERSION,
      .compiler = KV_COMPILER,
      .flags = KV_BUILD_FLAGS,
      .instruction_sets = {traits_of(Kernels::sse2).name, traits_of(Kernels::sse41).name,
                           traits_of(Kernels::avx2).name, traits_of(Kernels::avx512).name},
      .options = named_texts(KV_OPTIONS),
      .libraries = named_texts(KV_LIBRARIES)};
  return build;
}

}  // namespace kv::polarization
