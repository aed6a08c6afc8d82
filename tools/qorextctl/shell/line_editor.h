// SPDX-License-Identifier: Apache-2.0
// Lines typed at a terminal, with editing, history and completion. Output may come meanwhile.
#pragma once

#include <histedit.h>

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tools/qorextctl/output/terminal.h"
#include "tools/qorextctl/session/completion.h"

namespace qorextctl {

// Whether the terminal can be drawn upon: standard input and output, and what TERM says.
bool can_edit_lines();

class LineEditor final : public InputLine {
 public:
  // What ended the wait for a key.
  enum class Event { key, cancelled, ended };

  struct Hooks {
    std::function<Event(int fd)> wait;  // until standard input is readable
    std::function<Completion(const std::string& line)> complete;  // the line up to the cursor
  };

  LineEditor(const char* prompt, Hooks hooks);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // For the keys that go back in history, and for searching in it.
  void remember(const std::string& line);

  // A whole line without its end; an empty one when it was cancelled; nothing at the end of input.
  std::optional<std::string> read_line();

  void hide() override;
  void show() override;

 private:
  static LineEditor& of(EditLine* editor);
  static char* prompt_of(EditLine* editor);
  static int next_character(EditLine* editor, wchar_t* character);
  static unsigned char complete_word(EditLine* editor, int key);

  void take_terminal();
  bool wait_for_key();
  int read_character(wchar_t& character);
  void insert(const Completion& completion, const std::string& word);
  void list(const std::vector<Candidate>& candidates);
  void clear_line();
  size_t columns();
  size_t cursor_row();

  std::string prompt_;
  Hooks hooks_;
  EditLine* editor_;
  History* history_;
  std::mutex screen_;  // held by whoever changes the screen or the line
  bool typing_ = false;
  Event event_ = Event::key;
};

}  // namespace qorextctl
