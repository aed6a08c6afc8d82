// SPDX-License-Identifier: Apache-2.0
// The daemon as a whole: how long it takes to start, how fast indications come through it, what it
// needs. Prints JSON.
//
//   bench_whole ROUNDS    $QOREXT_BENCH_PLAN is the limit program's plan
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>

#include "bench/modem.h"
#include "bench/requests.h"
#include "bench/samples.h"
#include "tests/e2e/support/process_figures.h"

namespace {

using nlohmann::json;
using qorextctl::Daemon;

constexpr size_t kIndications = 5000;

struct Start {
  double ms;
  double processor_ms;
};

// From its start to the answer to a request that nobody serves.
Start start_once(const bench::Rig& rig, const char* program) {
  double start = bench::now();
  auto daemon = rig.start(program);
  return {1000 * (bench::now() - start), 1000 * bench::processor_seconds(*daemon)};
}

// The limit program opens as many sockets of the modem, and asks nothing.
json measure_starts(int rounds) {
  bench::Rig rig(bench::kQuickModemProgram, bench::Spread::free);
  bench::Samples times;
  bench::Samples processor;
  bench::Samples ratios;
  for (int i = 0; i < rounds; ++i) {
    Start of_daemon = start_once(rig, bench::kDaemonProgram);
    Start of_limit = start_once(rig, bench::kLimitProgram);
    times.push_back(of_daemon.ms);
    processor.push_back(of_daemon.processor_ms);
    ratios.push_back(of_daemon.ms / of_limit.ms);
  }
  return {{"start_ms", bench::median(times)},
          {"start_ratio", bench::median(ratios)},
          {"start_processor_ms", bench::median(processor)}};
}

void serve(Daemon& daemon, const qorextctl::Bytes& request) {
  uint8_t reply[4096];
  if (!daemon.send(request) || read(daemon.replies().fd(), reply, sizeof reply) <= 0) {
    throw std::runtime_error("no reply");
  }
}

json measure_footprint() {
  bench::Rig rig(bench::kQuickModemProgram, bench::Spread::free);
  auto daemon = rig.start(bench::kDaemonProgram);
  for (const auto& measured : bench::measured_requests()) serve(*daemon, measured.request);
  pid_t pid = daemon->process().pid();
  return {{"private_kib", e2e::private_memory_of(pid)}, {"threads", e2e::figures_of(pid).threads}};
}

json measure_indications(int rounds) {
  bench::Rig rig(bench::kModemProgram, bench::Spread::free);
  auto daemon = rig.start(bench::kDaemonProgram);
  bench::Modem modem(rig.control());
  bench::Samples rates;
  double processor = bench::processor_seconds(*daemon);
  for (int i = 0; i < rounds; ++i) {
    double start = bench::now();
    modem.command({{"command", "indicate"}, {"indication", "notify"}, {"count", kIndications}});
    for (size_t left = kIndications; left > 0; --left) {
      if (!daemon->receive_unsolicited(bench::patience())) throw std::runtime_error("none");
    }
    rates.push_back(kIndications / (bench::now() - start));
  }
  processor = bench::processor_seconds(*daemon) - processor;
  return {{"indications_per_s", bench::median(rates)},
          {"indication_processor_us", 1e6 * processor / kIndications / rounds}};
}

}  // namespace

int main(int argc, char** argv) {
  int rounds = argc > 1 ? std::atoi(argv[1]) : 1;
  json results = measure_starts(rounds);
  results.update(measure_footprint());
  results.update(measure_indications(rounds));
  std::cout << results.dump() << std::endl;
}
