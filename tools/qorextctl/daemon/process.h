// SPDX-License-Identifier: Apache-2.0
// Child processes.
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
  std::vector<int> descriptors = {};  // stay open with the same numbers, besides 0, 1 and 2
  int output = -1;                    // for standard output and error; -1: this program's
};

struct ExitStatus {
  int code = 0;    // valid if `signal` is 0
  int signal = 0;  // the signal that ended the program
};
std::string describe(const ExitStatus& status);

// A running program. It is terminated by the destructor, and when the thread that started it ends.
class Process {
 public:
  // Standard input is /dev/null. All descriptors but those in `launch` are closed.
  static Result<Process> start(const Launch& launch);

  Process(Process&& other) noexcept;
  Process& operator=(Process&&) = delete;
  ~Process();

  pid_t pid() const { return pid_; }

  // Returns nothing if the program still runs at the deadline.
  std::optional<ExitStatus> wait(Deadline deadline);
  void signal(int number) const;

 private:
  Process(pid_t pid, UniqueFd pidfd) : pid_(pid), pidfd_(std::move(pidfd)) {}

  pid_t pid_;
  UniqueFd pidfd_;
  std::optional<ExitStatus> status_;
};

// Returns the path of an executable in this program's folder, or an empty string if there is none.
std::string sibling(const std::string& name);

}  // namespace qorextctl
