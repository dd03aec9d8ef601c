// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

namespace kv::platform {

/// What the usual file systems hold of names.
#if defined(_WIN32)
inline constexpr bool kNamesIgnoreCase = true;
inline constexpr std::string_view kForbiddenInNames = "<>:\"|?*\\";
#elif defined(__APPLE__)
inline constexpr bool kNamesIgnoreCase = true;
inline constexpr std::string_view kForbiddenInNames;
#else
inline constexpr bool kNamesIgnoreCase = false;
inline constexpr std::string_view kForbiddenInNames;
#endif

}  // namespace kv::platform
