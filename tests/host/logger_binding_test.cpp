// The optional logger: whatever is there, and whatever it does, no call of the library changes.
#include <gtest/gtest.h>

#include <stdexcept>

#include "host.h"

namespace kv::test {
namespace {

const Events kNothing;
const Events kLoad{kLoggerComes[0]};
const Events kUnload{kLoggerGoes[1]};
const Events kFree{kLoggerGoes[0]};

struct Situation {
  const char* name;
  const char* variant;  ///< Of the logger.
  Function function;
  Behaviour behaviour;  ///< Of that function.
  Events expected;
};

void PrintTo(const Situation& situation, std::ostream* out) { *out << situation.name; }

class LoggerBinding : public testing::TestWithParam<Situation> {};

TEST_P(LoggerBinding, CallsFromInitializeToTerminate) {
  const Situation& situation = GetParam();
  const Host host({.logger = situation.variant, .avx512 = {}, .avx2 = {}});
  set_behaviour(situation.function, situation.behaviour);
  EXPECT_EQ(host.initialize(), kv_status_ok);
  EXPECT_EQ(host.transform(nullptr, Frame().arguments()), kv_status_null_handle);
  EXPECT_EQ(host.terminate(), kv_status_ok);
  EXPECT_EQ(events(), situation.expected);
}

const Situation kSituations[]{
    {"absent", "", {}, {}, kNothing},
    {"complete", "complete", {}, {}, kLoggerComes + null_handle_to_transform() + kLoggerGoes},
    {"without_get", "qrm_get_log", {}, {}, kLoad + kLoggerGoes},
    {"without_log", "qrm_log", {}, {}, kLoggerComes + kLoggerGoes},
    {"without_free", "qrm_free_log", {}, {}, kLoggerComes + null_handle_to_transform() + kUnload},
    {"null_log", "complete", Function::get_log, Behaviour::fail, kLoggerComes + kLoggerGoes},
    {"log_refuses", "complete", Function::log, Behaviour::fail,
     kLoggerComes + null_handle_to_transform() + kLoggerGoes},
    {"log_throws", "complete", Function::log, Behaviour::throw_other,
     kLoggerComes + null_handle_to_transform() + kLoggerGoes},
    {"free_throws", "complete", Function::free_log, Behaviour::throw_other,
     kLoggerComes + null_handle_to_transform() + kFree},
};

INSTANTIATE_TEST_SUITE_P(Logger, LoggerBinding, testing::ValuesIn(kSituations),
                         [](const auto& test) { return test.param.name; });

// The one fault of a logger that reaches the caller. The module stays uninitialised, and its lock
// taken.
TEST(LoggerThatThrows, PassesOutOfInitialize) {
  const Host host({.logger = "complete", .avx512 = {}, .avx2 = {}});
  set_behaviour(Function::get_log, Behaviour::throw_other);
  EXPECT_THROW(host.initialize(), std::runtime_error);
  EXPECT_EQ(host.destroy(nullptr), kv_status_not_initialized);
  EXPECT_EQ(events(), kLoggerComes);
}

}  // namespace
}  // namespace kv::test
