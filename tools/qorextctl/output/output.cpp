// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/output/output.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/item_text.h"
#include "tools/qorextctl/frames/personal.h"
#include "tools/qorextctl/output/catalogue_text.h"

namespace qorextctl {

namespace {

constexpr size_t kTailLines = 60;

std::string size_text(uint32_t length) {
  if (length == 0) return "";
  return length == 1 ? "1 byte" : fmt::format("{} bytes", length);
}

// Adds a prefix to each line.
std::string indented(std::string_view prefix, const std::string& text) {
  std::string result;
  for (size_t start = 0; start < text.size();) {
    size_t end = std::min(text.find('\n', start), text.size() - 1) + 1;
    result.append(prefix).append(text, start, end - start);
    start = end;
  }
  return result;
}

// The type "request" is used for the catalogue.
const char* type_of(FrameKind kind) {
  return kind == FrameKind::request ? "request-frame" : name_of(kind);
}

Json typed(const char* type, const Json& members) {
  Json object = {{"type", type}};
  object.update(members);
  return object;
}

}  // namespace

void Printer::share_screen_with(InputLine* line) {
  std::lock_guard lock(mutex_);
  input_line_ = line;
}

void Printer::object(const Json& object) {
  text(object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
}

void Printer::text(const std::string& text) { write(out_, text); }

void Printer::write(std::ostream& stream, const std::string& text) {
  std::lock_guard lock(mutex_);
  if (input_line_) input_line_->hide();
  stream << text << std::flush;
  if (input_line_) input_line_->show();
}

// An unsolicited frame shows its status only if it is not success.
std::string Printer::status_text(const DecodedFrame& frame, bool is_reply) const {
  if (!frame.status || (!is_reply && *frame.status == 0)) return "";
  std::string text = frame.status_name == "unknown"
                         ? fmt::format("unknown status {}", *frame.status)
                         : frame.status_name;
  return *frame.status == 0 ? out_colours_.good(text) : out_colours_.bad(text);
}

// For example "nv-read (0x02000016): success, 21 bytes".
std::string Printer::summary(const DecodedFrame& frame, std::string_view remark,
                             bool is_reply) const {
  std::string name = out_colours_.title(frame.name.empty() ? "unknown" : frame.name);
  std::string text = fmt::format("{} ({}){}", name, frame.id, remark);
  std::string_view separator = ": ";
  for (const std::string& part : {status_text(frame, is_reply), size_text(frame.length)}) {
    if (part.empty()) continue;
    text.append(separator).append(part);
    separator = ", ";
  }
  return text;
}

std::string Printer::frame_text(const std::string& title, const DecodedFrame& frame) const {
  std::string shown = title + "\n" + to_text(frame.fields);
  for (const std::string& problem : frame.problems) {
    shown += "  " + out_colours_.bad("problem:") + " " + problem + "\n";
  }
  return shown;
}

void Printer::frame(const std::string& title, const DecodedFrame& frame) {
  text(frame_text(title, frame) + (hex_ ? "  hex: " + hex_of(frame) + "\n" : ""));
}

void Printer::reply(const DecodedFrame& reply, std::string_view remark, const char* key,
                    bool value) {
  if (!frames_) return;
  if (!json_) return frame(summary(reply, remark, true), reply);
  Json members = to_json(reply);
  members[key] = value;
  object(typed("reply", members));
}

void Printer::reply(const DecodedFrame& frame, bool second) {
  reply(frame, second ? ", second reply" : "", "second", second);
}

void Printer::late_reply(const DecodedFrame& frame) { reply(frame, ", late reply", "late", true); }

void Printer::unsolicited(const DecodedFrame& message) {
  if (!frames_) return;
  if (!json_) return frame("unsolicited " + summary(message, "", false), message);
  object(typed("unsolicited", to_json(message)));
}

void Printer::decoded(FrameKind kind, const DecodedFrame& decoded) {
  if (json_) return object(typed(type_of(kind), to_json(decoded)));
  bool is_reply = kind == FrameKind::reply;
  frame(fmt::format("{} {}", name_of(kind), summary(decoded, "", is_reply)), decoded);
}

void Printer::log_entry(const std::string& line, const std::optional<LogContent>& content) {
  if (json_) {
    Json decoded = content ? typed(content->type, to_json(content->frame)) : Json();
    return object(typed("log", {{"line", printable(line)}, {"decoded", decoded}}));
  }
  std::string shown = line + "\n";
  if (content) {
    std::string title = fmt::format("{} {}", content->type,
                                    summary(content->frame, "", content->frame.status.has_value()));
    shown += indented("  | ", frame_text(title, content->frame));
  }
  text(shown);
}

void Printer::daemon_exit(const ExitStatus& status) {
  if (!json_) return text(fmt::format("daemon ended with {}\n", describe(status)));
  object(typed("exit", {{"status", status.signal == 0 ? Json(status.code) : Json()},
                        {"signal", status.signal == 0 ? Json() : Json(status.signal)}}));
}

void Printer::modem_answer(const std::string& command, const Json& answer) {
  if (json_) return object(typed("modem", {{"command", command}, {"answer", answer}}));
  Json content = answer;
  content.erase("ok");
  std::string shown =
      fmt::format("modem {}: {}\n", command, answer.value("ok", false) ? "ok" : "refused");
  text(content.empty() ? shown : shown + content.dump(2) + "\n");
}

void Printer::property(const std::string& name, const std::string& value) {
  if (json_) return object(typed("property", {{"name", name}, {"value", value}}));
  text(fmt::format("property {}: {}\n", name, value));
}

void Printer::phone(const std::string& root, const Items& report) {
  if (!json_) return text(fmt::format("phone {}\n", root) + to_text(report));
  Json members = {{"root", root}};
  members.update(to_json(report));
  object(typed("phone", members));
}

void Printer::result(const Json& json, const std::string& plain) {
  if (json_) return object(json);
  text(plain + "\n");
}

void Printer::results(const std::vector<Json>& objects, const std::string& plain) {
  if (!json_) return text(plain);
  for (const Json& one : objects) object(one);
}

void Printer::request_list(const std::vector<const Request*>& requests) {
  if (!json_) return text(catalogue_text(requests));
  for (const Request* request : requests) object(typed("request", catalogue_json(*request)));
}

void Printer::help(const std::string& help) {
  if (!json_) return text(help);
  object(typed("help", {{"text", help}}));
}

void Printer::error(const Error& error) {
  if (json_) {
    object(typed("error", {{"outcome", static_cast<int>(error.outcome)},
                           {"message", printable(error.message)}}));
  }
  write(err_, err_colours_.bad("qorextctl:") + " " + error.message + "\n");
}

std::string Printer::unknown_bytes(View bytes) const {
  return show_personal_ ? to_hex(bytes) : masked_hex(bytes.size());
}

std::string Printer::shown_line(LogReader& reader, const std::string& line) const {
  return show_personal_ ? line : reader.read(line).masked;
}

void Printer::log_line(const std::string& line) {
  write(err_, shown_line(log_reader_, line) + "\n");
}

void Printer::log_tail(const std::string& title, const std::vector<std::string>& lines) {
  if (lines.empty()) return;
  size_t first = lines.size() - std::min(lines.size(), kTailLines);
  std::string text =
      fmt::format("{}, last {} of {} lines:\n", title, lines.size() - first, lines.size());
  LogReader reader;
  for (size_t i = 0; i < lines.size(); ++i) {
    std::string line = shown_line(reader, lines[i]);
    if (i >= first) text += "  " + line + "\n";
  }
  write(err_, text);
}

}  // namespace qorextctl
