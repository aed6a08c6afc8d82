// SPDX-License-Identifier: Apache-2.0
// The phone's files and processes.
#pragma once

#include <string>
#include <vector>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/phone_root.h"

namespace e2e {

// "OWNER:GROUP MODE", as in "1001:2002 660"; "none" if the file does not exist.
std::string rights_of(const std::string& path);

void put_file(const std::string& path, const std::string& content);

// The content of /proc/PID/`name`.
std::string about_process(pid_t pid, const std::string& name);

}  // namespace e2e
