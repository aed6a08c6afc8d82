// SPDX-License-Identifier: Apache-2.0
// Reads lines at a terminal, with editing, history and completion. Other threads may print
// meanwhile.
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

// Returns whether standard input and output are terminals and TERM supports cursor movement.
bool can_edit_lines();

class LineEditor final : public InputLine {
 public:
  // The result of a wait for a key.
  enum class Event { key, cancelled, ended };

  struct Hooks {
    std::function<Event(int fd)> wait;  // waits until standard input is readable
    std::function<Completion(const std::string& line)> complete;  // the line up to the cursor
  };

  LineEditor(const char* prompt, Hooks hooks);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // Adds a line to the history of this editor.
  void remember(const std::string& line);

  // Returns a line without its end, an empty line if it was cancelled, or nothing at the end of
  // input.
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
  std::mutex screen_;  // guards the screen and the line
  bool typing_ = false;
  Event event_ = Event::key;
};

}  // namespace qorextctl
