// SPDX-License-Identifier: Apache-2.0
// A control socket that gives one prepared answer.
#pragma once

#include <string>
#include <thread>

#include "tools/qorextctl/base/fd.h"

namespace qorextctl {

class FakeModem {
 public:
  // Answers the first line with `answer` as it is (give it a line end), then hangs up.
  explicit FakeModem(const std::string& answer);
  ~FakeModem();

  const std::string& path() const { return path_; }
  // What was asked, without its line end; waits for the exchange to end.
  std::string asked();

 private:
  void serve(const std::string& answer);

  std::string path_;
  UniqueFd listener_;
  std::string asked_;
  std::thread thread_;
};

}  // namespace qorextctl
