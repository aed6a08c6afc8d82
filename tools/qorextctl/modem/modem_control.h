// SPDX-License-Identifier: Apache-2.0
// The client of the simulated modem's control socket: one JSON object per line in each direction.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/qorextctl/base/deadline.h"
#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

class ModemControl {
 public:
  // `seconds` limits the time to connect, and of each later send to a modem that does not read.
  static Result<ModemControl> connect(const std::string& path,
                                      double seconds = kDefaultTimeoutSeconds);

  // A readable `interrupt_fd` ends the waits for answers.
  void watch(int interrupt_fd) { interrupt_fd_ = interrupt_fd; }

  // The modem's answer, {"ok":true,...} or {"ok":false,"error":"..."}.
  Result<Json> call(const Json& command, Deadline deadline);

  // After the command "watch": the reports received before the last answer.
  std::vector<Json> take_reports() { return std::exchange(reports_, {}); }

 private:
  ModemControl(UniqueFd socket, std::string path)
      : socket_(std::move(socket)), path_(std::move(path)) {}
  bool send_line(const std::string& line) const;
  // The next whole line of those received, if there is one.
  std::optional<std::string> take_line();
  Result<std::string> receive_line(Deadline deadline);

  UniqueFd socket_;
  std::string path_;
  int interrupt_fd_ = -1;
  std::string rest_;     // received after the last whole line
  size_t searched_ = 0;  // bytes of it that hold no line end
  std::vector<Json> reports_;
};

}  // namespace qorextctl
