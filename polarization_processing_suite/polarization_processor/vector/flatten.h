// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

// Asks for everything that a function calls to be inlined into it: left to itself, g++ -O2 keeps
// the formulas of a block as functions and passes their vectors through memory, a third slower. Not
// under a sanitizer of g++, whose checks multiply with inlining until it takes minutes.
#if defined(__GNUC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define KV_FLATTEN [[gnu::flatten]]
#else
#define KV_FLATTEN
#endif
