// SPDX-License-Identifier: Apache-2.0
// The simulated modem's control socket.
#pragma once

#include <stdexcept>
#include <string>

#include "tests/e2e/support/value_or_throw.h"
#include "tools/qorextctl/modem/ask_modem.h"

namespace bench {

class Modem {
 public:
  explicit Modem(const std::string& control)
      : control_(e2e::value_or_throw(qorextctl::ModemControl::connect(control))) {}

  // Returns when what the command begins has ended.
  void command(const qorextctl::Json& command) {
    constexpr double kSecondsWithoutProgress = 60;
    auto answer =
        e2e::value_or_throw(qorextctl::call_to_end(control_, command, kSecondsWithoutProgress));
    if (!answer.value("ok", false)) throw std::runtime_error(answer.dump());
  }

 private:
  qorextctl::ModemControl control_;
};

}  // namespace bench
