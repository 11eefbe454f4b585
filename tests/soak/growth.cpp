#include "soak/growth.h"

#include <algorithm>
#include <cstddef>

namespace soak {
namespace {

int64_t median_of_quarter(const std::vector<int64_t>& samples, size_t quarter) {
  const auto place = [&](size_t of) {
    return samples.begin() + static_cast<ptrdiff_t>(samples.size() * of / 4);
  };
  std::vector<int64_t> part(place(quarter - 1), place(quarter));
  const auto middle = part.begin() + static_cast<ptrdiff_t>(part.size() / 2);
  std::nth_element(part.begin(), middle, part.end());
  return *middle;
}

}  // namespace

Verdict judge(const Series& series) {
  // Too few samples tell nothing, and that is no good news.
  if (series.samples.size() < 8) return {0, 0, true};
  const int64_t second = median_of_quarter(series.samples, 2);
  const int64_t last = median_of_quarter(series.samples, 4);
  return {second, last, last > second + series.allowance};
}

}  // namespace soak
