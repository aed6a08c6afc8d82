// SPDX-License-Identifier: Apache-2.0
// A line that is being typed where output comes too.
#pragma once

namespace qorextctl {

class InputLine {
 public:
  // Before output, on any thread: takes the line off the screen. Followed by show(), which puts it
  // back below the output.
  virtual void hide() = 0;
  virtual void show() = 0;

 protected:
  ~InputLine() = default;
};

}  // namespace qorextctl
