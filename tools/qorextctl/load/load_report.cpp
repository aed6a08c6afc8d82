// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/load/load_report.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "tools/qorextctl/daemon/channel.h"

namespace qorextctl {

namespace {

// Milliseconds; each bucket ends at twice the end of the one before.
constexpr double kMinBucket = 0.0625;
constexpr size_t kMaxHashes = 40;

struct QuantileRow {
  const char* name;
  double share;
};
constexpr QuantileRow kQuantiles[] = {
    {"min", 0}, {"p50", 0.5}, {"p90", 0.9}, {"p99", 0.99}, {"max", 1},
};

constexpr size_t kProgressWidth = 30;
constexpr std::chrono::milliseconds kProgressInterval{100};

double rounded(double milliseconds) { return std::round(milliseconds * 1000) / 1000; }

Json to_json(const std::vector<float>& times) {
  Json object;
  for (const auto& [name, share] : kQuantiles) object[name] = rounded(quantile(times, share));
  return object;
}

void write_text(int fd, const std::string& text) {
  write_whole(fd, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

}  // namespace

void LoadReport::add(const std::string& name, const Timing& timing, bool failed) {
  Samples& samples = names_[name];
  samples.latencies.push_back(static_cast<float>(timing.latency));
  samples.services.push_back(static_cast<float>(timing.service));
  if (failed) ++samples.failed;
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
      // Also the empty buckets between: the scale of the histogram has no gaps.
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
  std::string text = fmt::format("{:<22}{:>9}{:>8}", "request", "count", "failed");
  for (const auto& [name, share] : kQuantiles) text += fmt::format("{:>10}", name);
  text += "  ms\n";
  for (const auto& [name, samples] : names_) {
    text += fmt::format("{:<22}{:>9}{:>8}", name, samples.latencies.size(), samples.failed);
    for (const auto& row : kQuantiles) {
      text += fmt::format("{:>10.3f}", quantile(samples.latencies, row.share));
    }
    text += '\n';
  }
  text += fmt::format("{} requests in {:.3f} s, {:.1f} a second, {} failed\n", count_, seconds_,
                      rate(), failed());
  auto buckets = histogram();
  size_t max_count = 1;
  for (const Bucket& bucket : buckets) max_count = std::max(max_count, bucket.count);
  for (const Bucket& bucket : buckets) {
    size_t hashes = (bucket.count * kMaxHashes + max_count - 1) / max_count;
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
                   {"latency_ms", to_json(samples.latencies)},
                   {"service_ms", to_json(samples.services)}});
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

std::string progress_text(size_t done, size_t all, double seconds) {
  size_t hashes = all == 0 ? kProgressWidth : kProgressWidth * done / all;
  std::string text = fmt::format("[{}{}] {}/{}", std::string(hashes, '#'),
                                 std::string(kProgressWidth - hashes, '.'), done, all);
  if (done == 0 || seconds <= 0) return text;
  double rate = static_cast<double>(done) / seconds;
  return text + fmt::format(", {:.0f} a second, {:.0f} s left", rate,
                            static_cast<double>(all - done) / rate);
}

void Progress::update(size_t done) {
  if (fd_ < 0 || Clock::now() < next_) return;
  next_ = Clock::now() + kProgressInterval;
  line_ = progress_text(done, all_, std::chrono::duration<double>(Clock::now() - start_).count());
  show();
}

void Progress::hide() {
  if (!line_.empty()) write_text(fd_, "\r\x1B[K");
}

void Progress::show() {
  if (!line_.empty()) write_text(fd_, "\r" + line_ + "\x1B[K");
}

}  // namespace qorextctl
