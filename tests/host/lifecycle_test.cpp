// How the life of the module, and that of processors, shows in the calls to the companions.
#include <gtest/gtest.h>

#include "host.h"

namespace kv::test {
namespace {

void expect_ok(ProcessorStatus status) { EXPECT_EQ(status, kv_status_ok); }

struct Story {
  const char* name;
  void (*act)(Host& host);
  Events expected;
};

const Events kModulesCome{"load avx512", "initialize avx512", "load avx2", "initialize avx2"};
const Events kModulesGo{"terminate avx2", "unload avx2", "terminate avx512", "unload avx512"};

const Story kStories[]{
    {"terminate first",
     [](Host& host) {
       expect_ok(host.terminate());
       expect_ok(host.initialize());
       expect_ok(host.terminate());
       expect_ok(host.terminate());
     },
     kLoggerComes + kLoggerGoes},
    {"nested initialize",
     [](Host& host) {
       expect_ok(host.initialize());
       expect_ok(host.initialize());
       expect_ok(host.terminate());
       EXPECT_EQ(host.transform(nullptr, Frame().arguments()), kv_status_null_handle);
       expect_ok(host.terminate());
       EXPECT_EQ(host.transform(nullptr, Frame().arguments()), kv_status_not_initialized);
     },
     kLoggerComes + null_handle_to_transform() + kLoggerGoes},
    {"a second life",
     [](Host& host) {
       for (int life = 0; life < 2; ++life) {
         expect_ok(host.initialize());
         expect_ok(host.terminate());
       }
     },
     kLoggerComes + kLoggerGoes + kLoggerComes + kLoggerGoes},
    {"a processor outlives the module",
     [](Host& host) {
       PolarizationProcessor* handle = nullptr;
       expect_ok(host.initialize());
       expect_ok(host.create(handle));
       expect_ok(host.terminate());
       EXPECT_EQ(host.destroy(handle), kv_status_not_initialized);
       EXPECT_EQ(host.create(handle), kv_status_not_initialized);
       expect_ok(host.initialize());
       expect_ok(host.destroy(handle));
       expect_ok(host.terminate());
     },
     kLoggerComes + kModulesCome + kLoggerGoes + kLoggerComes + kModulesGo + kLoggerGoes},
    {"two processors",
     [](Host& host) {
       PolarizationProcessor* first = nullptr;
       PolarizationProcessor* second = nullptr;
       expect_ok(host.initialize());
       expect_ok(host.create(first));
       expect_ok(host.create(second));
       expect_ok(host.destroy(first));
       expect_ok(host.destroy(second));
       expect_ok(host.terminate());
     },
     kLoggerComes + kModulesCome + Events{"initialize avx512", "initialize avx2"} +
         Events{"terminate avx2", "terminate avx512"} + kModulesGo + kLoggerGoes},
    {"unloaded without a terminate",
     [](Host& host) {
       expect_ok(host.initialize());
       expect_ok(host.initialize());
       host.unload();
     },
     kLoggerComes + kLoggerGoes},
    {"unloaded without an initialize", [](Host& host) { host.unload(); }, {}},
};

void PrintTo(const Story& story, std::ostream* out) { *out << story.name; }

class Life : public testing::TestWithParam<Story> {};

TEST_P(Life, OfModuleAndProcessorsAsCompanionsSeeIt) {
  Host host(kAllCompanions);
  GetParam().act(host);
  EXPECT_EQ(events(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Host, Life, testing::ValuesIn(kStories));

}  // namespace
}  // namespace kv::test
