// SPDX-License-Identifier: Apache-2.0
// What a replay found, as it finds it.
#pragma once

#include "tools/qorextctl/output/output.h"
#include "tools/qorextctl/replay/compare.h"

namespace qorextctl {

class ReplayReport {
 public:
  ReplayReport(Printer& printer, bool show_personal)
      : printer_(printer), show_personal_(show_personal) {}

  // `line` is the recording's; `what` names a frame or message.
  template <class Decoded>
  void compared(size_t line, const std::string& what, const Decoded& expected, const Decoded& got) {
    ++compared_;
    auto show = [this](const Decoded& decoded) { return comparable(decoded, show_personal_); };
    for (const Difference& found : compare(show(expected), show(got))) add(line, what, found);
  }
  template <class Decoded>
  void missing(size_t line, const std::string& what, const Decoded& expected) {
    add(line, what, {"", comparable(expected, show_personal_).shown, nullptr});
  }
  template <class Decoded>
  void unexpected(const std::string& what, const Decoded& got) {
    add(0, what, {"", nullptr, comparable(got, show_personal_).shown});
  }
  // `line` 0: of no line of the recording.
  void add(size_t line, const std::string& what, const Difference& difference);

  void summary(const std::string& path);
  bool is_same() const { return differences_ == 0; }

 private:
  Printer& printer_;
  bool show_personal_;
  size_t compared_ = 0;
  size_t differences_ = 0;
};

}  // namespace qorextctl
