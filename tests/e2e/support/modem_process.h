// SPDX-License-Identifier: Apache-2.0
// A simulated modem that one test owns.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/support/phone_root.h"

namespace e2e {

class ModemProcess {
 public:
  // Returns when the modem accepts connections.
  explicit ModemProcess(const PhoneRoot& phone);
  // Ends the modem and expects its exit status to be 0.
  ~ModemProcess();

  // Ends it without a warning, as a crash does.
  void kill();
  pid_t pid() const;

  // Sends a command to the control socket, in the words of "qorextctl modem". Expects the modem to
  // accept it.
  void command(const std::string& words);
  // Returns one value of the answer to a command: "/state/carrier/bc10". Numbers become text.
  std::string value(const std::string& words, const std::string& pointer);
  // Returns the requests to the modem since the last call, in the form of modem_request().
  std::vector<std::string> requests();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

// A request as the modem decoded it: "SERVICE MESSAGE {FIELDS}", with the fields sorted by name and
// bytes as_hex().
std::string modem_request(const std::string& service, const std::string& message,
                          const std::string& fields);

// A request to the vendor service.
inline std::string vendor_request(const std::string& message, const std::string& fields = "{}") {
  return modem_request("qorext", message, fields);
}

}  // namespace e2e
