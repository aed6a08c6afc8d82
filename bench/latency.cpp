// SPDX-License-Identifier: Apache-2.0
// From a request's write to its reply's read, for the daemon and beside it for the limit program,
// in turns of a few requests each. Prints JSON.
//
//   bench_latency ROUNDS   both, everything on one core and on two; $QOREXT_BENCH_PLAN is the
//                          limit's plan
// and without measuring:
//   bench_latency record PROGRAM             every request twice, to be recorded
//   bench_latency repeat PROGRAM NAME COUNT  one request so many times, to be counted
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <nlohmann/json.hpp>

#include "bench/requests.h"
#include "bench/samples.h"

namespace {

using bench::Samples;
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

Samples take_turn(Daemon& daemon, const qorextctl::Bytes& request) {
  Samples samples;
  for (int i = 0; i < kRequestsATurn; ++i) samples.push_back(serve_once(daemon, request));
  return samples;
}

json distribution(const Samples& samples) {
  constexpr double kMicroseconds = 1e6;
  json points = json::array();
  for (int i = 0; i <= kPoints; ++i) {
    points.push_back(kMicroseconds * bench::quantile(samples, static_cast<double>(i) / kPoints));
  }
  return {{"p50_us", kMicroseconds * bench::quantile(samples, 0.50)},
          {"p99_us", kMicroseconds * bench::quantile(samples, 0.99)},
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
    ratios.push_back(bench::median(one) / bench::median(other));
    of_daemon.insert(of_daemon.end(), one.begin(), one.end());
    of_limit.insert(of_limit.end(), other.begin(), other.end());
  }
  json result = {{"daemon", distribution(of_daemon)}, {"limit", distribution(of_limit)}};
  result["p50_ratio"] = bench::median(ratios);
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

// The request with this name `count` times; without a name all of them in turns.
void serve_repeatedly(const char* program, const std::string& name, int count) {
  bench::Rig rig(bench::kQuickModemProgram, bench::Spread::free);
  auto daemon = rig.start(program);
  for (int i = 0; i < count; ++i) {
    for (const auto& measured : bench::measured_requests()) {
      if (name.empty() || name == measured.name) serve_once(*daemon, measured.request);
    }
  }
  daemon->close_requests();
  if (!daemon->wait_exit(bench::patience())) throw std::runtime_error("the daemon does not end");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && strcmp(argv[1], "record") == 0) {
    serve_repeatedly(argv[2], "", 2);
    return 0;
  }
  if (argc == 5 && strcmp(argv[1], "repeat") == 0) {
    serve_repeatedly(argv[2], argv[3], std::atoi(argv[4]));
    return 0;
  }
  int rounds = argc > 1 ? std::atoi(argv[1]) : 1;
  json results = {{"one_core", compare_all(bench::Spread::one_core, rounds)},
                  {"two_cores", compare_all(bench::Spread::two_cores, rounds)}};
  std::cout << results.dump() << std::endl;
}
