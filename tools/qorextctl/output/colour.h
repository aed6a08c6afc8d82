// SPDX-License-Identifier: Apache-2.0
// Colours for people at a terminal.
#pragma once

#include <string>

namespace qorextctl {

enum class ColourWhen { automatic, always, never };

// Paints texts, or leaves them as they are.
class Colours {
 public:
  explicit Colours(bool on = false) : on_(on) {}

  // For a descriptor: `automatic` is a terminal that knows colours, unless NO_COLOR is set.
  static Colours choose(ColourWhen when, int fd);

  std::string title(const std::string& text) const;
  std::string good(const std::string& text) const;
  std::string bad(const std::string& text) const;

 private:
  std::string painted(const char* code, const std::string& text) const;

  bool on_;
};

}  // namespace qorextctl
