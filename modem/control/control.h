// SPDX-License-Identifier: Apache-2.0
// The protocol of the control socket: one JSON object per line in each direction.
#pragma once

#include <span>
#include <string>

#include "modem/simulator/simulator.h"

namespace modem {

class Control {
 public:
  explicit Control(Simulator& simulator) : simulator_(simulator) {}

  // The answer to one line, without a line end: {"ok":true,...} or {"ok":false,"error":"..."}.
  std::string answer(const std::string& line);

  // Whether any line was "quit".
  bool quit_wanted() const { return quit_wanted_; }

  // Whether the last line was "watch": its sender is to get all reports from now on.
  bool watch_wanted() const { return watch_wanted_; }

 private:
  nlohmann::json run(const std::string& line);

  Simulator& simulator_;
  bool quit_wanted_ = false;
  bool watch_wanted_ = false;
};

// The reports for connections that watch the modem. Times are in nanoseconds of the monotonic
// clock, which all processes of the machine share.
// {"message":{"time":...,"service":"qorext","client":3,"packet":"00..."}}
std::string watched_message(const qmi_idl::Service& service, uint64_t client,
                            std::span<const uint8_t> packet);
// {"service":{"time":...,"name":"qorext","up":false}}
std::string watched_service(const qmi_idl::Service& service, bool is_up);

}  // namespace modem
