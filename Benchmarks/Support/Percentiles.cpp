#include "Support/Percentiles.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tallyfoot::benchmarks {

double percentile(std::vector<double> samples, double share) {
    const auto rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(samples.size())));
    const auto place = samples.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(rank, 1) - 1);
    std::nth_element(samples.begin(), place, samples.end());
    return *place;
}

} // namespace tallyfoot::benchmarks
