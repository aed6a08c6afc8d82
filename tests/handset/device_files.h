// SPDX-License-Identifier: Apache-2.0
// The phone's files, as the tests of the handset look at them.
#pragma once

#include <string>
#include <vector>

#include "tests/e2e/support/files.h"
#include "tests/e2e/support/phone_root.h"

namespace e2e {

// "OWNER:GROUP MODE", as in "1001:2002 660"; "none" when there is no such file.
std::string rights_of(const std::string& path);

void put_file(const std::string& path, const std::string& content);

// What a process says about itself: /proc/PID/`name`.
std::string about_process(pid_t pid, const std::string& name);

}  // namespace e2e
