// SPDX-License-Identifier: Apache-2.0
// The test's end of the switches in faulty/switches.h.
#pragma once

#include <string>

#include "tests/e2e/faulty/switches.h"

namespace e2e {

class Switchboard {
 public:
  Switchboard();
  Switchboard(const Switchboard&) = delete;
  Switchboard& operator=(const Switchboard&) = delete;
  ~Switchboard();

  // While it lives, programs that are started have the library with the switches in front of the C
  // library.
  class Wiring {
   public:
    Wiring(const Switchboard& board, const std::string& library);
    Wiring(const Wiring&) = delete;
    Wiring& operator=(const Wiring&) = delete;
    ~Wiring();
  };

  Switches* operator->() { return switches_; }

 private:
  std::string path_;
  Switches* switches_;
};

}  // namespace e2e
