// SPDX-License-Identifier: Apache-2.0
// A control socket of a modem, with one prepared answer.
#pragma once

#include <string>
#include <thread>

#include "tools/qorextctl/base/fd.h"

namespace qorextctl {

class FakeModem {
 public:
  // Answers one line with `answer`, which must contain the line end, then closes the connection.
  explicit FakeModem(const std::string& answer);
  ~FakeModem();

  const std::string& path() const { return path_; }
  // Waits for the exchange to end. Returns the received line without its end.
  std::string received();

 private:
  void serve(const std::string& answer);

  std::string path_;
  UniqueFd listener_;
  std::string received_;
  std::thread thread_;
};

}  // namespace qorextctl
