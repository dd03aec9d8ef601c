// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace kv::polarization {

/// The library's module, open as long as this lives.
///
/// A library that runs out of memory while it opens keeps its lock, and the next call that opens it
/// would wait for ever: after such a failure the constructor throws Fault of kind state instead.
class OpenModule {
 public:
  OpenModule();
  ~OpenModule();
  OpenModule(const OpenModule&) = delete;
  OpenModule& operator=(const OpenModule&) = delete;
};

}  // namespace kv::polarization
