// SPDX-License-Identifier: Apache-2.0
#include <errno.h>
#include <fmt/format.h>
#include <stdio.h>
#include <unistd.h>

#include <system_error>

#include "modem/options.h"
#include "modem/scenario.h"
#include "modem/server_loop.h"
#include "modem/state/state.h"

namespace {

using modem::Options;

constexpr int kFailure = 1;
constexpr int kScenarioFailure = 2;

void report_ready(int fd) {
  if (fd < 0) return;
  constexpr char kByte = '\n';
  if (write(fd, &kByte, sizeof kByte) != sizeof kByte) perror("qorext_modem: ready descriptor");
  close(fd);
}

modem::Scenario start_scenario(const Options& options) {
  if (options.scenario_path.empty()) return {modem::factory_state(), {}};
  return modem::load_scenario(options.scenario_path);
}

std::unique_ptr<qmi_transport::Server> open_server(const Options& options) {
  auto server = qmi_transport::serve(options.endpoint);
  if (!server) throw std::system_error(errno, std::generic_category(), "cannot serve the endpoint");
  return server;
}

void run(const Options& options) {
  modem::Scenario scenario = start_scenario(options);
  modem::Simulator simulator(scenario.state, options.seed);
  simulator.instances = options.instances.value_or(scenario.instances);
  for (const modem::Fault& fault : scenario.faults) simulator.faults.add(fault);

  modem::ServerLoop loop(simulator, open_server(options), options.control_path, options.is_verbose);
  report_ready(options.ready_fd);
  loop.run();
}

}  // namespace

int main(int argc, char** argv) {
  auto parsed = modem::parse_options(argc, argv);
  if (const int* status = std::get_if<int>(&parsed)) return *status;
  try {
    run(std::get<Options>(parsed));
    return 0;
  } catch (const modem::ScenarioError& error) {
    fmt::print(stderr, "{}\n", error.what());
    return kScenarioFailure;
  } catch (const std::exception& error) {
    fmt::print(stderr, "qorext_modem: {}\n", error.what());
    return kFailure;
  }
}
