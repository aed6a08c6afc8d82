// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/shell/shell.h"

#include <unistd.h>

#include "tools/qorextctl/modem/modem_control.h"
#include "tools/qorextctl/shell/history.h"
#include "tools/qorextctl/shell/line_editor.h"

namespace qorextctl {

namespace {

constexpr const char* kPrompt = "qorext> ";
constexpr double kStateTimeout = 0.5;  // seconds; the user waits for the completion

void add_keys(std::vector<std::string>& keys, const std::string& prefix, const Json& table) {
  for (const auto& [name, value] : table.items()) {
    if (value.is_object()) {
      add_keys(keys, prefix + name + ".", value);
    } else if (!value.is_array() || value.empty() || !value[0].is_object()) {
      keys.push_back(prefix + name);
    }
  }
}

// For example "lte.mcc" and "carrier.bsr_timer", the keys of "modem set".
std::vector<std::string> state_keys(const std::string& control) {
  std::vector<std::string> keys;
  if (control.empty()) return keys;
  auto modem = ModemControl::connect(control, kStateTimeout);
  if (!modem) return keys;
  auto answer = modem->call({{"command", "state"}}, Deadline::in_seconds(kStateTimeout));
  if (answer && answer->contains("state")) add_keys(keys, "", (*answer)["state"]);
  return keys;
}

class Shell {
 public:
  Shell(Session& session, Printer& printer)
      : session_(session),
        printer_(printer),
        history_(history_path()),
        editor_(kPrompt, {[this](int fd) { return wait(fd); },
                          [this](const std::string& line) { return complete(line); }}) {
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

  Completion complete(const std::string& line) {
    return complete_line(line, [this] { return state_keys(session_.control()); });
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
