// SPDX-License-Identifier: Apache-2.0
// Differences between a recording and what the daemon sent.
#pragma once

#include <string>
#include <vector>

#include "tools/qorextctl/frames/decode.h"
#include "tools/qorextctl/output/output.h"
#include "tools/qorextctl/recording/conversation.h"

namespace qorextctl {

struct Difference {
  std::string field;  // "fields.pairs[2].sid"; empty: all of it is missing or unexpected
  Json expected;      // null: nothing
  Json got;           // null: nothing
};

// A decoded frame or message, and its form in the output.
struct Comparable {
  Json value;
  Json shown;  // the same members; personal values may be masked
};
Comparable comparable(const DecodedFrame& frame, bool show_personal);
Comparable comparable(const QmiMessage& message, bool show_personal);

// Compares field by field, and the bytes if all fields are equal.
std::vector<Difference> compare(const Comparable& expected, const Comparable& got);

// Prints the differences of a replay.
class ReplayReport {
 public:
  ReplayReport(Printer& printer, bool show_personal)
      : printer_(printer), show_personal_(show_personal) {}

  // `line` is that of the recording; `what` is the title of a frame or message.
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
  // `line` 0: no line of the recording.
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
