// SPDX-License-Identifier: Apache-2.0
#include "modem/options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "common/completion/command_line.h"
#include "modem/control/commands.h"
#include "modem/simulator/simulator.h"

namespace modem {
namespace {

constexpr int kUsageError = 2;

constexpr char kFooter[] =
    R"(examples:
  qorext_modem --listen unix:/tmp/modem.sock --control /tmp/control.sock &
  qorextctl --modem unix:/tmp/modem.sock request get-nam
  qorextctl --control /tmp/control.sock modem state
  qorext_modem --listen qrtr --scenario lab.toml

exit status:
  0  ended by a signal or the command "quit"
  1  a socket cannot be created
  2  wrong usage, or a wrong scenario
)";

std::string check_endpoint(const std::string& text) {
  return qmi_transport::parse_endpoint(text) ? "" : "\"" + text + "\" is not unix:PATH or qrtr";
}

qmi_transport::Endpoint chosen_endpoint(const std::string& listen) {
  auto endpoint = listen.empty() ? qmi_transport::endpoint_from_environment()
                                 : qmi_transport::parse_endpoint(listen);
  if (!endpoint) throw CLI::ValidationError("QOREXT_MODEM", "is not unix:PATH or qrtr");
  return *endpoint;
}

}  // namespace

std::variant<Options, int> parse_options(int argc, char** argv) {
  Options options{};
  std::string listen;
  CLI::App app("A simulated modem: the qorext, NAS and DMS services over QMI.", "qorext_modem");
  app.footer(kFooter);
  app.add_option("--listen", listen,
                 "unix:PATH or qrtr (default: $QOREXT_MODEM, else unix:/run/qorext_modem.sock)")
      ->check(check_endpoint);
  app.add_option("--control", options.control_path,
                 "Unix socket for commands, one JSON object per line");
  app.add_option("--scenario", options.scenario_path, "TOML file with the start state");
  app.add_option("--instances", options.instances,
                 "of the vendor's service; 2 emulates a phone with a separate modem chip (1)")
      ->check(CLI::Range(uint32_t{1}, kMaxInstances));
  app.add_option("--ready-fd", options.ready_fd,
                 "descriptor that gets one byte and is closed when all sockets are open")
      ->check(CLI::NonNegativeNumber);
  app.add_option("--seed", options.seed, "seed for the random bytes of faults");
  app.add_flag("--verbose", options.is_verbose, "print one line per message on stderr");
  app.set_version_flag("--version", kVersion);

  if (argc > 1 && argv[1] == completion::kVerb) {
    fmt::print("{}", completion::to_text(completion::complete(app, {argv + 2, argv + argc})));
    return 0;
  }
  try {
    app.parse(argc, argv);
    options.endpoint = chosen_endpoint(listen);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUsageError;
  }
  return options;
}

}  // namespace modem
