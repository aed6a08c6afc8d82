// SPDX-License-Identifier: Apache-2.0
// The time from a request's write to its reply's read, of the daemon and of the limit program, in
// alternating turns of a few requests. Prints JSON.
//
//   bench_latency ROUNDS                     measures on one core and on two
//   bench_latency record PROGRAM             sends every request twice, to record the calls
//   bench_latency repeat PROGRAM NAME COUNT  sends one request COUNT times, to count its costs
//
// $QOREXT_BENCH_PLAN names the plan of the limit program.
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "bench/rig.h"

namespace {

using bench::Daemon;
using bench::Samples;
using nlohmann::json;
using qorextctl::quantile;

constexpr int kRequestsPerTurn = 25;
constexpr int kPoints = 200;  // of the distribution

// In microseconds.
Samples take_turn(Daemon& daemon, const bench::Bytes& request) {
  Samples samples;
  qorextctl::run_exchanges(
      kRequestsPerTurn, 0, [](size_t, auto) { return true; },
      [&] { bench::exchange(daemon, request); },
      [&](const qorextctl::Timing& timing) { samples.push_back(1000 * timing.service); });
  return samples;
}

json distribution(const Samples& samples) {
  json points = json::array();
  for (int i = 0; i <= kPoints; ++i) {
    points.push_back(quantile(samples, static_cast<double>(i) / kPoints));
  }
  return {{"p50_us", quantile(samples, 0.50)},
          {"p99_us", quantile(samples, 0.99)},
          {"points_us", points}};
}

// Ratios are those of neighbouring turns, so that other load of the machine affects both sides.
json compare(Daemon& daemon, Daemon& limit, const bench::Bytes& request, int rounds) {
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
  return {{"daemon", distribution(of_daemon)},
          {"limit", distribution(of_limit)},
          {"p50_ratio", bench::median(ratios)},
          {"p99_ratio", quantile(of_daemon, 0.99) / quantile(of_limit, 0.99)}};
}

json compare_all(bench::Spread spread, int rounds) {
  bench::Rig rig(bench::kQuickModemProgram, spread);
  auto daemon = rig.start(bench::kDaemonProgram);
  auto limit = rig.start(bench::kLimitProgram);
  json results;
  for (const auto& [name, request] : bench::measured_requests()) {
    results[name] = compare(*daemon, *limit, request, rounds);
  }
  return results;
}

// Sends the named request `count` times; all requests in turns without a name.
void serve_repeatedly(const char* program, const std::string& chosen, int count) {
  bench::Rig rig(bench::kQuickModemProgram, bench::Spread::free);
  auto daemon = rig.start(program);
  auto requests = bench::measured_requests();
  for (int i = 0; i < count; ++i) {
    for (const auto& [name, request] : requests) {
      if (chosen.empty() || chosen == name) bench::exchange(*daemon, request);
    }
  }
  daemon->close_requests();
  if (!daemon->wait_exit(bench::long_deadline()))
    throw std::runtime_error("the daemon does not exit");
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
