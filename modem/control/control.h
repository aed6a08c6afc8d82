// SPDX-License-Identifier: Apache-2.0
// The commands of the control socket: one JSON object a line in, one out.
#pragma once

#include <string>

#include "modem/simulator/simulator.h"

namespace modem {

class Control {
 public:
  explicit Control(Simulator& simulator) : simulator_(simulator) {}

  // The answer to one line, without its line end: {"ok":true,...} or {"ok":false,"error":"..."}.
  std::string answer(const std::string& line);

  // Whether "quit" was commanded.
  bool quit_wanted() const { return quit_wanted_; }

  // Whether the last line was "watch": its sender wants to be told of all messages from now on.
  bool watch_wanted() const { return watch_wanted_; }

 private:
  nlohmann::json run(const std::string& line);

  Simulator& simulator_;
  bool quit_wanted_ = false;
  bool watch_wanted_ = false;
};

}  // namespace modem
