#include "steps/otsu.h"

#include "histogram.h"

namespace omb {

int OtsuThreshold(const PackedDib* dib) {
  const Histogram histogram = Measure(dib, {Channel::kGray}).front();
  const auto total = static_cast<double>(histogram.total());
  const double sum = histogram.mean() * total;
  double dark = 0, dark_sum = 0, best = 0;
  int threshold = 127;
  for (int level = 0; level < 255; ++level) {
    const auto count = static_cast<double>(histogram.counts[static_cast<size_t>(level)]);
    dark += count;
    dark_sum += count * level;
    if (dark == 0 || dark == total) continue;
    const double difference = dark_sum / dark - (sum - dark_sum) / (total - dark);
    const double variance = dark * (total - dark) * difference * difference;
    if (variance <= best) continue;
    best = variance;
    threshold = level;
  }
  return threshold;
}

}  // namespace omb
