// SPDX-License-Identifier: Apache-2.0
// The control socket of the simulated modem: one JSON object a line in, one out.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tools/qorextctl/base/deadline.h"
#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {

// From words as people write them: "nv 28 0A", "indicate pfp rat=1 --count 3", "service nas down".
// A word that begins with '{' is taken as the whole object.
Result<Json> modem_command(std::span<const std::string> words);

// The modem's name of an indication: engineers have shorter words for some.
std::string modem_indication(const std::string& word);

struct ModemCommand {
  const char* name;
  const char* arguments;
  const char* help;
};
std::vector<ModemCommand> modem_commands();

// One line a command, for --help.
std::string modem_command_help();

class ModemControl {
 public:
  // Also sending takes no longer than `seconds`, where the modem does not read.
  static Result<ModemControl> connect(const std::string& path,
                                      double seconds = kDefaultTimeoutSeconds);

  // A readable `interrupt_fd` ends the waits for answers.
  void watch(int interrupt_fd) { interrupt_fd_ = interrupt_fd; }

  // The modem's answer, whatever it says: {"ok":true,...} or {"ok":false,"error":"..."}.
  Result<Json> call(const Json& command, Deadline deadline);

  // What the modem has told before the last answer, after the command "watch".
  std::vector<Json> take_told() { return std::exchange(told_, {}); }

 private:
  ModemControl(UniqueFd socket, std::string path)
      : socket_(std::move(socket)), path_(std::move(path)) {}
  bool send_line(const std::string& line) const;
  // The next line of those received; nothing while none is whole.
  std::optional<std::string> take_line();
  Result<std::string> receive_line(Deadline deadline);

  UniqueFd socket_;
  std::string path_;
  int interrupt_fd_ = -1;
  std::string rest_;     // received after the last line
  size_t searched_ = 0;  // of it, without a line end
  std::vector<Json> told_;
};

}  // namespace qorextctl
