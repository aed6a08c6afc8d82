// SPDX-License-Identifier: Apache-2.0
// Output at a terminal: colours, and the line that is being typed.
#pragma once

#include <string>

namespace qorextctl {

enum class ColourWhen { automatic, always, never };

// Adds escape sequences for colours to texts, or returns the texts unchanged.
class Colours {
 public:
  explicit Colours(bool on = false) : on_(on) {}

  // `automatic`: on if the descriptor is a terminal with colours and NO_COLOR is not set.
  static Colours choose(ColourWhen when, int fd);

  std::string title(const std::string& text) const;
  std::string good(const std::string& text) const;
  std::string bad(const std::string& text) const;

 private:
  std::string painted(const char* code, const std::string& text) const;

  bool on_;
};

// A line that is being typed, to which a Printer gives way.
class InputLine {
 public:
  // Removes the line from the screen before output, and restores it below the output. Always
  // called in pairs, from any thread.
  virtual void hide() = 0;
  virtual void show() = 0;

 protected:
  ~InputLine() = default;
};

}  // namespace qorextctl
