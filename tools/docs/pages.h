// SPDX-License-Identifier: Apache-2.0
// Pages of docs/ that are printed from the tables of the programs.
#pragma once

#include <span>
#include <string>

namespace docs {

struct Page {
  const char* file;  // in docs/
  std::string (*text)();
};
std::span<const Page> pages();

// Requests, replies and unsolicited frames between the daemon and its parent.
std::string host_protocol();

// The QMI messages between the daemon and the modem.
std::string modem_messages();

// The keys of a scenario file.
std::string scenario_keys();

}  // namespace docs
