// SPDX-License-Identifier: Apache-2.0
// The kernel shows the insides of a process that has changed its user only to the most privileged.
// A test that wants to see them becomes the radio user before it starts the daemon, which then has
// nothing left to change, and runs copies of the executables and libraries that every user can run.
#pragma once

#include <string>

namespace e2e {

// Does nothing when it is not root that runs the test.
void become_radio_user();

class Installation {
 public:
  // Copied before a change of the user, from folders that may be closed to others.
  Installation();
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;
  ~Installation();

  std::string programs() const { return path_ + "/bin"; }

 private:
  std::string path_;
};

}  // namespace e2e
