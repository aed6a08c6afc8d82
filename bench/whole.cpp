// SPDX-License-Identifier: Apache-2.0
// The daemon as a whole: its start-up time, its rate of indications, its memory and threads. Prints
// JSON.
//
//   bench_whole ROUNDS    $QOREXT_BENCH_PLAN is the plan of the limit program
#include <cstdlib>
#include <iostream>

#include "bench/rig.h"
#include "tests/e2e/support/process_figures.h"

namespace {

using nlohmann::json;

constexpr size_t kIndications = 5000;

struct Start {
  double ms;
  double processor_ms;
};

// From its start to the reply to a first request.
Start start_once(const bench::Rig& rig, const char* program) {
  double start = bench::now();
  auto daemon = rig.start(program);
  return {1000 * (bench::now() - start), 1000 * bench::processor_seconds(*daemon)};
}

// The limit program opens as many sockets of the modem, and sends nothing.
json measure_starts(int rounds) {
  bench::Rig rig(bench::kQuickModemProgram, bench::Spread::free);
  bench::Figures figures;
  for (int i = 0; i < rounds; ++i) {
    Start daemon = start_once(rig, bench::kDaemonProgram);
    Start limit = start_once(rig, bench::kLimitProgram);
    figures["start_ms"].push_back(daemon.ms);
    figures["start_ratio"].push_back(daemon.ms / limit.ms);
    figures["start_processor_ms"].push_back(daemon.processor_ms);
  }
  return bench::medians(figures);
}

json measure_footprint() {
  bench::Rig rig(bench::kQuickModemProgram, bench::Spread::free);
  auto daemon = rig.start(bench::kDaemonProgram);
  for (const auto& measured : bench::measured_requests())
    bench::exchange(*daemon, measured.request);
  pid_t pid = daemon->process().pid();
  return {{"private_kib", e2e::private_memory_of(pid)}, {"threads", e2e::figures_of(pid).threads}};
}

json measure_indications(int rounds) {
  bench::Rig rig(bench::kModemProgram, bench::Spread::free);
  auto daemon = rig.start(bench::kDaemonProgram);
  bench::Samples rates;
  double processor = bench::processor_seconds(*daemon);
  for (int i = 0; i < rounds; ++i) {
    double start = bench::now();
    rig.command_modem({{"command", "indicate"}, {"indication", "notify"}, {"count", kIndications}});
    for (size_t left = kIndications; left > 0; --left) {
      if (!daemon->receive_unsolicited(bench::long_deadline()))
        throw std::runtime_error("no message");
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
