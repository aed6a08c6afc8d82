// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/load/load_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace qorextctl {

namespace {

// Milliseconds; each bucket reaches twice as far as the one before.
constexpr double kMinBucket = 0.0625;
constexpr size_t kMaxHashes = 40;

double at_rank(const std::vector<float>& sorted, double share) {
  auto rank = static_cast<size_t>(std::ceil(share * static_cast<double>(sorted.size())));
  return sorted[std::max<size_t>(rank, 1) - 1];
}

double rounded(double milliseconds) { return std::round(milliseconds * 1000) / 1000; }

Json to_json(const Quantiles& times) {
  return {{"min", rounded(times.min)},
          {"p50", rounded(times.p50)},
          {"p90", rounded(times.p90)},
          {"p99", rounded(times.p99)},
          {"max", rounded(times.max)}};
}

}  // namespace

Quantiles quantiles_of(std::vector<float> values) {
  if (values.empty()) return {};
  std::sort(values.begin(), values.end());
  return {values.front(), at_rank(values, 0.5), at_rank(values, 0.9), at_rank(values, 0.99),
          values.back()};
}

void LoadReport::add(const std::string& name, const LoadSample& sample) {
  Samples& samples = names_[name];
  samples.latencies.push_back(sample.latency);
  samples.services.push_back(sample.service);
  if (sample.failed) ++samples.failed;
  ++count_;
}

size_t LoadReport::failed() const {
  size_t all = 0;
  for (const auto& [name, samples] : names_) all += samples.failed;
  return all;
}

double LoadReport::rate() const {
  return seconds_ > 0 ? static_cast<double>(count_) / seconds_ : 0;
}

std::vector<LoadReport::Bucket> LoadReport::histogram() const {
  std::vector<Bucket> buckets;
  for (const auto& [name, samples] : names_) {
    for (float latency : samples.latencies) {
      double doublings = std::ceil(std::log2(std::max(latency / kMinBucket, 1e-9)));
      auto place = static_cast<size_t>(std::max(doublings, 0.0));
      while (buckets.size() <= place) {
        buckets.push_back({kMinBucket * std::exp2(static_cast<double>(buckets.size())), 0});
      }
      ++buckets[place].count;
    }
  }
  auto first = std::find_if(buckets.begin(), buckets.end(),
                            [](const Bucket& bucket) { return bucket.count != 0; });
  buckets.erase(buckets.begin(), first);
  return buckets;
}

std::string LoadReport::text() const {
  std::string text = fmt::format("{:<22}{:>9}{:>8}{:>10}{:>10}{:>10}{:>10}{:>10}  ms\n", "request",
                                 "count", "failed", "min", "p50", "p90", "p99", "max");
  for (const auto& [name, samples] : names_) {
    Quantiles times = quantiles_of(samples.latencies);
    text += fmt::format("{:<22}{:>9}{:>8}{:>10.3f}{:>10.3f}{:>10.3f}{:>10.3f}{:>10.3f}\n", name,
                        samples.latencies.size(), samples.failed, times.min, times.p50, times.p90,
                        times.p99, times.max);
  }
  text += fmt::format("{} requests in {:.3f} s, {:.1f} a second, {} failed\n", count_, seconds_,
                      rate(), failed());
  auto buckets = histogram();
  size_t most = 1;
  for (const Bucket& bucket : buckets) most = std::max(most, bucket.count);
  for (const Bucket& bucket : buckets) {
    size_t hashes = (bucket.count * kMaxHashes + most - 1) / most;
    text += fmt::format("  up to {:>10.3f} ms {:>9} {}", bucket.below, bucket.count,
                        std::string(hashes, '#'));
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text;
}

std::vector<Json> LoadReport::objects() const {
  std::vector<Json> all;
  for (const auto& [name, samples] : names_) {
    all.push_back({{"type", "load"},
                   {"name", name},
                   {"count", samples.latencies.size()},
                   {"failed", samples.failed},
                   {"latency_ms", to_json(quantiles_of(samples.latencies))},
                   {"service_ms", to_json(quantiles_of(samples.services))}});
  }
  Json buckets = Json::array();
  for (const Bucket& bucket : histogram()) {
    buckets.push_back({{"up_to_ms", bucket.below}, {"count", bucket.count}});
  }
  all.push_back({{"type", "load-total"},
                 {"count", count_},
                 {"failed", failed()},
                 {"seconds", rounded(seconds_)},
                 {"rate", rounded(rate())},
                 {"histogram", buckets}});
  return all;
}

}  // namespace qorextctl
