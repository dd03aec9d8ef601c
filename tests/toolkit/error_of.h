// SPDX-FileCopyrightText: 2026 The kevrinth_qrm_polarization authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <optional>
#include <string>

#include "kv/polarization/fault.h"

/// The message that the action fails with; empty if it succeeds.
template <class Action>
std::string error_of(Action action) {
  try {
    action();
    return "";
  } catch (const kv::polarization::Fault& error) {
    return error.what();
  }
}

/// The kind of fault that the action fails with; none if it succeeds.
template <class Action>
std::optional<kv::polarization::FaultKind> kind_of(Action action) {
  try {
    action();
    return std::nullopt;
  } catch (const kv::polarization::Fault& error) {
    return error.kind();
  }
}

/// For EXPECT_PRED2, which shows both texts.
inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}
