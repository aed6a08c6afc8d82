// SPDX-License-Identifier: Apache-2.0
// The command line of qorext_modem.
#pragma once

#include <stdint.h>

#include <optional>
#include <string>
#include <variant>

#include "platform/linux/qmi_transport/transport.h"

namespace modem {

struct Options {
  qmi_transport::Endpoint endpoint;
  std::string control_path;           // empty: no control socket
  std::string scenario_path;          // empty: the factory's state
  std::optional<uint32_t> instances;  // of the vendor's service; default: the scenario's
  int ready_fd = -1;
  uint32_t seed = 1;
  bool is_verbose = false;
};

// Returns the options, or the exit status (0 after --help and --version).
std::variant<Options, int> parse_options(int argc, char** argv);

}  // namespace modem
