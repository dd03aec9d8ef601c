#include "opencv_baseline.h"

namespace kv::bench {

struct OpencvBaseline::Buffers {};

OpencvBaseline::OpencvBaseline() = default;
OpencvBaseline::~OpencvBaseline() = default;

const char* OpencvBaseline::missing() { return "this build has no OpenCV"; }

void OpencvBaseline::operator()(const TransformRequest&) {}

}  // namespace kv::bench
