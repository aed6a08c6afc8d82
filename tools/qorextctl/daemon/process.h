// SPDX-License-Identifier: Apache-2.0
// Programs started by this one.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/qorextctl/base/deadline.h"
#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/base/result.h"

namespace qorextctl {

struct Launch {
  std::vector<std::string> arguments;  // the first one is the path of the executable
  std::vector<std::pair<std::string, std::string>> environment = {};  // added to this program's
  std::vector<int> descriptors = {};  // kept open, under their numbers, beside 0, 1 and 2
  int output = -1;                    // standard output and error; -1: this program's own
};

struct ExitStatus {
  int code = 0;    // when `signal` is 0
  int signal = 0;  // that ended the program
};
std::string describe(const ExitStatus& status);

// A running program. It is ended with its owner, and when the starting thread dies.
class Process {
 public:
  // Standard input is empty. The child has no descriptor open that is not named.
  static Result<Process> start(const Launch& launch);

  Process(Process&& other) noexcept;
  Process& operator=(Process&&) = delete;
  ~Process();

  pid_t pid() const { return pid_; }

  // Nothing when it still runs at the deadline.
  std::optional<ExitStatus> wait(Deadline deadline);
  void signal(int number) const;

 private:
  Process(pid_t pid, UniqueFd pidfd) : pid_(pid), pidfd_(std::move(pidfd)) {}

  pid_t pid_;
  UniqueFd pidfd_;
  std::optional<ExitStatus> status_;
};

// An executable in the folder of the running one; empty when it is not there.
std::string sibling(const std::string& name);

}  // namespace qorextctl
