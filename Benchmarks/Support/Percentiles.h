#pragma once

#include <vector>

namespace tallyfoot::benchmarks {

// The sample that this share of all samples does not exceed. At least one sample.
double percentile(std::vector<double> samples, double share);

} // namespace tallyfoot::benchmarks
