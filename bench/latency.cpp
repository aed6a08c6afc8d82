// From a request's write to its reply's read, for the daemon and beside it for the limit program,
// in turns of a few requests each. Prints JSON.
//
//   bench_latency ROUNDS         both, everything on one core and on two; $QOREXT_BENCH_PLAN is the
//                                limit's plan
//   bench_latency once PROGRAM   every request twice, for a recording of what the program does
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>

#include "requests.h"

namespace {

using nlohmann::json;
using qorextctl::Daemon;

constexpr int kRequestsATurn = 25;
constexpr int kPoints = 200;  // of the distribution

double serve_once(Daemon& daemon, const qorextctl::Bytes& request) {
  uint8_t reply[4096];
  double start = bench::now();
  if (!daemon.send(request) || read(daemon.replies().fd(), reply, sizeof reply) <= 0) {
    throw std::runtime_error("no reply");
  }
  return bench::now() - start;
}

using Samples = std::vector<double>;

Samples take_turn(Daemon& daemon, const qorextctl::Bytes& request) {
  Samples samples;
  for (int i = 0; i < kRequestsATurn; ++i) samples.push_back(serve_once(daemon, request));
  return samples;
}

double quantile(const Samples& sorted, double part) {
  return sorted[static_cast<size_t>(part * static_cast<double>(sorted.size() - 1))];
}

double median(Samples samples) {
  std::sort(samples.begin(), samples.end());
  return quantile(samples, 0.5);
}

json distribution(Samples samples) {
  std::sort(samples.begin(), samples.end());
  constexpr double kMicroseconds = 1e6;
  json points = json::array();
  for (int i = 0; i <= kPoints; ++i) {
    points.push_back(kMicroseconds * quantile(samples, static_cast<double>(i) / kPoints));
  }
  return {{"p50_us", kMicroseconds * quantile(samples, 0.50)},
          {"p99_us", kMicroseconds * quantile(samples, 0.99)},
          {"points_us", points}};
}

// The ratio is that of neighbouring turns: what else the machine does is then in both.
json compare(Daemon& daemon, Daemon& limit, const qorextctl::Bytes& request, int rounds) {
  Samples of_daemon;
  Samples of_limit;
  Samples ratios;
  for (int round = 0; round < rounds; ++round) {
    Samples one = take_turn(daemon, request);
    Samples other = take_turn(limit, request);
    ratios.push_back(median(one) / median(other));
    of_daemon.insert(of_daemon.end(), one.begin(), one.end());
    of_limit.insert(of_limit.end(), other.begin(), other.end());
  }
  json result = {{"daemon", distribution(of_daemon)}, {"limit", distribution(of_limit)}};
  result["p50_ratio"] = median(ratios);
  result["p99_ratio"] =
      result["daemon"]["p99_us"].get<double>() / result["limit"]["p99_us"].get<double>();
  return result;
}

json compare_all(bench::Spread spread, int rounds) {
  bench::Rig rig(bench::kQuickModemProgram, spread);
  auto daemon = rig.start(bench::kDaemonProgram);
  auto limit = rig.start(bench::kLimitProgram);
  json results;
  for (const auto& measured : bench::measured_requests()) {
    results[measured.name] = compare(*daemon, *limit, measured.request, rounds);
  }
  return results;
}

void serve_all_twice(const char* program) {
  bench::Rig rig(bench::kQuickModemProgram, bench::Spread::free);
  auto daemon = rig.start(program);
  for (int i = 0; i < 2; ++i) {
    for (const auto& measured : bench::measured_requests()) serve_once(*daemon, measured.request);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && strcmp(argv[1], "once") == 0) {
    serve_all_twice(argv[2]);
    return 0;
  }
  int rounds = argc > 1 ? std::atoi(argv[1]) : 1;
  json results = {{"one_core", compare_all(bench::Spread::one_core, rounds)},
                  {"two_cores", compare_all(bench::Spread::two_cores, rounds)}};
  std::cout << results.dump() << std::endl;
}
