// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/shell/line_editor.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>

namespace qorextctl {

namespace {

constexpr int kMaxRemembered = 1000;
constexpr size_t kDefaultColumns = 80;
constexpr int kCaretWidth = 2;  // of a control character, shown as ^X

bool is_word_end(const std::string& text) {
  return text.empty() || (text.back() != '=' && text.back() != '/' && text.back() != '.');
}

// Without a locale in the environment, UTF-8 is the most probable encoding.
void set_utf8_locale() {
  setlocale(LC_CTYPE, "");
  if (MB_CUR_MAX == 1) setlocale(LC_CTYPE, "C.UTF-8");
}

std::string in_columns(const std::vector<Candidate>& candidates, size_t columns) {
  size_t width = 0;
  for (const Candidate& candidate : candidates) width = std::max(width, candidate.text.size() + 2);
  size_t per_row = std::max<size_t>(1, columns / width);
  std::string text;
  for (size_t i = 0; i < candidates.size(); ++i) {
    bool is_last = (i + 1) % per_row == 0 || i + 1 == candidates.size();
    text += is_last ? candidates[i].text + "\n" : fmt::format("{:<{}}", candidates[i].text, width);
  }
  return text;
}

// One row for each candidate, with its remark.
std::string in_rows(const std::vector<Candidate>& candidates) {
  std::string text;
  for (const Candidate& candidate : candidates) {
    text += fmt::format("{:<24} {}", candidate.text, candidate.remark);
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text;
}

}  // namespace

bool can_edit_lines() {
  const char* terminal = getenv("TERM");
  bool can_move = terminal && *terminal && std::string_view(terminal) != "dumb";
  return can_move && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

LineEditor::LineEditor(const char* prompt, Hooks hooks)
    : prompt_(prompt), hooks_(std::move(hooks)), history_(history_init()) {
  set_utf8_locale();
  editor_ = el_init("qorextctl", stdin, stdout, stderr);
  HistEvent event;
  history(history_, &event, H_SETSIZE, kMaxRemembered);
  history(history_, &event, H_SETUNIQUE, 1);
  el_set(editor_, EL_CLIENTDATA, this);
  el_set(editor_, EL_PROMPT, prompt_of);
  el_set(editor_, EL_EDITOR, "emacs");
  el_set(editor_, EL_HIST, history, history_);
  el_set(editor_, EL_GETCFN, next_character);
  // el_set() would copy the texts and never free them.
  el_wset(editor_, EL_ADDFN, L"complete-word", L"complete the word", complete_word);
  el_source(editor_, nullptr);  // the user's ~/.editrc
  el_set(editor_, EL_BIND, "^I", "complete-word", nullptr);
  take_terminal();
}

LineEditor::~LineEditor() {
  el_end(editor_);
  history_end(history_);
}

void LineEditor::remember(const std::string& line) {
  HistEvent event;
  history(history_, &event, H_ENTER, line.c_str());
}

std::optional<std::string> LineEditor::read_line() {
  std::unique_lock lock(screen_);
  typing_ = true;
  event_ = Event::key;
  int size = 0;
  const char* text = el_gets(editor_, &size);
  typing_ = false;
  take_terminal();
  if (event_ == Event::cancelled) fputs("^C", stdout);
  if (!text || size <= 0) fputs("\n", stdout);
  fflush(stdout);
  if (event_ == Event::cancelled) return "";
  if (!text || size <= 0) return std::nullopt;
  std::string line(text, static_cast<size_t>(size));
  line.erase(line.find_last_not_of("\r\n") + 1);
  return line;
}

// Also between two lines: the terminal would echo characters typed ahead into the output.
void LineEditor::take_terminal() { el_set(editor_, EL_PREP_TERM, 1); }

void LineEditor::hide() {
  screen_.lock();
  if (typing_) clear_line();
}

void LineEditor::show() {
  if (typing_) el_set(editor_, EL_REFRESH);
  screen_.unlock();
}

LineEditor& LineEditor::of(EditLine* editor) {
  void* self = nullptr;
  el_get(editor, EL_CLIENTDATA, &self);
  return *static_cast<LineEditor*>(self);
}

char* LineEditor::prompt_of(EditLine* editor) { return of(editor).prompt_.data(); }

int LineEditor::next_character(EditLine* editor, wchar_t* character) {
  LineEditor& self = of(editor);
  return self.wait_for_key() ? self.read_character(*character) : -1;
}

// Other threads may print during the wait.
bool LineEditor::wait_for_key() {
  screen_.unlock();
  event_ = hooks_.wait(STDIN_FILENO);
  screen_.lock();
  el_resize(editor_);
  return event_ == Event::key;
}

// Returns 1, 0 at the end of input or -1 on an error, as EL_GETCFN requires. Skips bytes that are
// not part of a character.
int LineEditor::read_character(wchar_t& character) {
  mbstate_t state{};
  for (;;) {
    char byte = 0;
    ssize_t size = read(STDIN_FILENO, &byte, 1);
    if (size <= 0) return static_cast<int>(size);
    size_t used = mbrtowc(&character, &byte, 1, &state);
    if (used == 0) character = L'\0';
    if (used <= 1) return 1;
    if (used == static_cast<size_t>(-1)) state = {};
  }
}

unsigned char LineEditor::complete_word(EditLine* editor, int /*key*/) {
  LineEditor& self = of(editor);
  const LineInfo* info = el_line(editor);
  std::string line(info->buffer, info->cursor);
  Completion completion = self.hooks_.complete(line);
  if (completion.candidates.empty()) return CC_REFRESH_BEEP;
  std::string word = line.substr(completion.start);
  if (completion.candidates.size() > 1 && completion.common() == word) {
    self.list(completion.candidates);
    return CC_NORM;
  }
  self.insert(completion, word);
  return CC_REFRESH;
}

void LineEditor::insert(const Completion& completion, const std::string& word) {
  std::string rest = completion.common().substr(word.size());
  bool is_whole = completion.candidates.size() == 1 && is_word_end(completion.common());
  el_insertstr(editor_, (rest + (is_whole ? " " : "")).c_str());
}

// Prints above the line, which does not change.
void LineEditor::list(const std::vector<Candidate>& candidates) {
  bool has_remarks = std::any_of(candidates.begin(), candidates.end(),
                                 [](const Candidate& one) { return !one.remark.empty(); });
  clear_line();
  fputs((has_remarks ? in_rows(candidates) : in_columns(candidates, columns())).c_str(), stdout);
  el_set(editor_, EL_REFRESH);
}

// Clears from the line's first row to the end of the screen: the library does not know about the
// rows below.
void LineEditor::clear_line() {
  size_t row = cursor_row();
  if (row > 0) fmt::print(stdout, "\x1B[{}A", row);
  fputs("\r\x1B[J", stdout);
  fflush(stdout);
}

size_t LineEditor::columns() {
  winsize size{};
  bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : kDefaultColumns;
}

// The row of the cursor relative to the prompt, with the library's line folding.
size_t LineEditor::cursor_row() {
  const LineInfoW* info = el_wline(editor_);
  size_t width = columns();
  size_t row = prompt_.size() / width;
  size_t column = prompt_.size() % width;
  for (const wchar_t* character = info->buffer; character < info->cursor; ++character) {
    int own = wcwidth(*character);
    size_t wide = static_cast<size_t>(own < 0 ? kCaretWidth : own);
    bool folds = column + wide > width;
    column = folds ? wide : column + wide;
    if (folds) ++row;
  }
  return column >= width ? row + 1 : row;
}

}  // namespace qorextctl
