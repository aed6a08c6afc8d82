// SPDX-License-Identifier: Apache-2.0
// A program at a terminal of its own, and what it shows there.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/e2e/support/screen.h"
#include "tools/qorextctl/base/fd.h"

namespace e2e {

class Terminal {
 public:
  using Environment = std::vector<std::pair<std::string, std::string>>;

  static constexpr size_t kColumns = 80;

  Terminal(const std::vector<std::string>& arguments, const Environment& environment);
  // Ends the program as the closing of a terminal's window does.
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void type(const std::string& keys);

  // Until the screen is as wanted, or the program has ended. That it comes in time is expected.
  void wait_for(const std::string& what, const std::function<bool(const Screen&)>& is_so);
  void wait_for_row(const std::string& text);     // that holds the text
  void wait_for_cursor(const std::string& text);  // the cursor's row is this

  const Screen& screen() const { return screen_; }
  std::string text() const;

  // Waits for the program's end; -1 when it was ended by a signal, or not in time.
  int exit_status();

 private:
  bool read_more(int timeout_ms);

  qorextctl::UniqueFd terminal_;
  pid_t pid_ = -1;
  Screen screen_{kColumns};
};

}  // namespace e2e
