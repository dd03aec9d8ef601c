// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

#if defined(_WIN32)
#define KV_VECTOR_MODULE_EXPORT extern "C" __declspec(dllexport)
#else
#define KV_VECTOR_MODULE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

struct PolarizationProcessor;
