// The two levels of life: the module, which counts, and processors, which outlive it.
#include <gtest/gtest.h>

#include <vector>

#include "public_call.h"

namespace kv::test {
namespace {

enum class Step { initialize, terminate, create, destroy, destroy_null, get, set, transform };

struct Expectation {
  Step step;
  ProcessorStatus status;
};

struct Story {
  const char* name;
  std::vector<Expectation> steps;
};

ProcessorStatus take(Step step, PolarizationProcessor*& handle) {
  std::array<Weights, 4> weights{};
  std::array<std::uint16_t, 4> frame{};
  std::array<std::uint16_t, 4> intensity{};
  Arguments arguments;
  arguments.input = frame.data();
  arguments.intensity = intensity.data();
  switch (step) {
    case Step::initialize:
      return kv_polarization_processor_module_initialize();
    case Step::terminate:
      return kv_polarization_processor_module_terminate();
    case Step::create:
      return kv_polarization_processor_create_polarization_processor(&handle);
    case Step::destroy:
      return kv_polarization_processor_destroy_polarization_processor(handle);
    case Step::destroy_null:
      return kv_polarization_processor_destroy_polarization_processor(nullptr);
    case Step::get:
      return get_weights(handle, weights);
    case Step::set:
      return set_weights(handle, weights);
    case Step::transform:
      return transform(handle, arguments);
  }
  return -1;
}

constexpr ProcessorStatus ok = kv_status_ok;
constexpr ProcessorStatus closed = kv_status_not_initialized;
constexpr ProcessorStatus null_handle = kv_status_null_handle;

const std::vector<Story> kStories{
    {"everything is refused before initialize",
     {{Step::create, closed},
      {Step::destroy_null, closed},
      {Step::get, closed},
      {Step::set, closed},
      {Step::transform, closed}}},
    {"null handles",
     {{Step::initialize, ok},
      {Step::destroy_null, null_handle},
      {Step::get, null_handle},
      {Step::set, null_handle},
      {Step::transform, null_handle},
      {Step::terminate, ok}}},
    {"a processor outlives the module",
     {{Step::initialize, ok},
      {Step::create, ok},
      {Step::terminate, ok},
      {Step::transform, closed},
      {Step::get, closed},
      {Step::set, closed},
      {Step::destroy, closed},
      {Step::initialize, ok},
      {Step::get, ok},
      {Step::transform, ok},
      {Step::destroy, ok},
      {Step::terminate, ok}}},
};

TEST(Lifecycle, StatusOfEachStep) {
  for (const Story& story : kStories) {
    PolarizationProcessor* handle = nullptr;
    for (std::size_t i = 0; i < story.steps.size(); ++i) {
      EXPECT_EQ(take(story.steps[i].step, handle), story.steps[i].status)
          << story.name << ", step " << i;
    }
  }
}

TEST(Lifecycle, CreateWritesTheHandleOnSuccessOnly) {
  std::uint16_t somewhere = 0;
  auto* const before = reinterpret_cast<PolarizationProcessor*>(&somewhere);
  PolarizationProcessor* handle = before;
  EXPECT_EQ(kv_polarization_processor_create_polarization_processor(&handle), closed);
  EXPECT_EQ(handle, before);
}

}  // namespace
}  // namespace kv::test
