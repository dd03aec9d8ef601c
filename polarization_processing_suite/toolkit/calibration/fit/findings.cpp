#include "toolkit/calibration/fit/findings.h"

namespace kv::polarization {

void add_findings(const FitEvidence&, Calibration&) {}

}  // namespace kv::polarization
