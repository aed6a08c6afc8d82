// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/shell/shell.h"

#include <unistd.h>

#include "tools/qorextctl/shell/history.h"
#include "tools/qorextctl/shell/line_editor.h"

namespace qorextctl {

namespace {

constexpr const char* kPrompt = "qorext> ";

class Shell {
 public:
  Shell(Session& session, Printer& printer)
      : session_(session),
        printer_(printer),
        history_(history_path()),
        editor_(kPrompt, {[this](int fd) { return wait(fd); }, complete_line}) {
    printer_.share_screen_with(&editor_);
    recall();
  }
  ~Shell() { printer_.share_screen_with(nullptr); }
  Shell(const Shell&) = delete;
  Shell& operator=(const Shell&) = delete;

  void run() {
    while (auto line = editor_.read_line()) {
      remember(*line);
      session_.run_line(*line);
      if (!session_.resume()) return;
    }
  }

 private:
  LineEditor::Event wait(int fd) {
    if (session_.wait_input(fd)) return LineEditor::Event::key;
    return session_.resume() ? LineEditor::Event::cancelled : LineEditor::Event::ended;
  }

  void recall() {
    auto lines = history_.load();
    if (!lines) printer_.error(lines.error());
    if (!lines) return;
    for (const std::string& line : *lines) editor_.remember(line);
  }

  // As in other shells, a line that begins with a blank is not stored.
  void remember(const std::string& line) {
    if (line.find_first_not_of(" \t") == std::string::npos) return;
    editor_.remember(line);
    if (has_history_failed_ || line.front() == ' ' || is_private_line(line)) return;
    auto error = history_.add(line);
    has_history_failed_ = error.has_value();
    if (error) printer_.error(*error);
  }

  Session& session_;
  Printer& printer_;
  HistoryFile history_;
  LineEditor editor_;
  bool has_history_failed_ = false;  // reported once
};

}  // namespace

Outcome run_shell(Session& session, Printer& printer) {
  if (!can_edit_lines()) return session.run_lines(STDIN_FILENO);
  Shell(session, printer).run();
  session.forget_failures();
  return Outcome::success;
}

}  // namespace qorextctl
