// SPDX-License-Identifier: Apache-2.0
// A simulated modem of a test's own.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/support/phone_root.h"

namespace e2e {

class ModemProcess {
 public:
  // Returns when it can be reached.
  explicit ModemProcess(const PhoneRoot& phone);
  // Ends it; that it ends by itself and with status 0 is expected.
  ~ModemProcess();

  // Ends it as a crash does.
  void kill();
  pid_t pid() const;

  // A command of its control socket, in the words of "qorextctl modem ...". That the modem takes it
  // is expected.
  void command(const std::string& words);
  // One value out of the answer to a command: "/state/carrier/bc10", numbers as text.
  std::string value(const std::string& words, const std::string& pointer);
  // What it was asked since the last call, as asked() writes it.
  std::vector<std::string> requests();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

// A request as the modem understood it: "SERVICE MESSAGE {FIELDS}", the fields in the order of
// their names, bytes as_hex().
std::string asked(const std::string& service, const std::string& message,
                  const std::string& fields);

}  // namespace e2e
