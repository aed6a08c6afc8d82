// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/decode_input.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iostream>

#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/personal.h"
#include "tools/qorextctl/log/log_reader.h"

namespace qorextctl {

namespace {

std::optional<FrameKind> frame_kind(InputKind as) {
  switch (as) {
    case InputKind::request:
      return FrameKind::request;
    case InputKind::reply:
      return FrameKind::reply;
    case InputKind::unsolicited:
      return FrameKind::unsolicited;
    default:
      return std::nullopt;
  }
}

class Decoder {
 public:
  Decoder(InputKind as, bool show_personal, Printer& printer)
      : as_(as), show_personal_(show_personal), printer_(printer) {}

  Outcome frame(const std::string& text) {
    auto bytes = parse_hex(text);
    if (!bytes || bytes->empty()) return fail("not hex (pairs of digits)");
    auto kind = frame_kind(as_);
    if (!kind) kind = recognise(*bytes);
    if (!kind) {
      return fail(fmt::format(
          "not a known frame ({} bytes); --as request, reply or unsolicited decodes it anyway",
          bytes->size()));
    }
    DecodedFrame decoded = decode_as(*kind, *bytes);
    if (!show_personal_) mask(decoded);
    printer_.decoded(*kind, decoded);
    return decoded.problems.empty() ? Outcome::success : Outcome::refused;
  }

  Outcome line(const std::string& line) {
    ++line_;
    if (as_ == InputKind::log) return log_line(line);
    if (frame_kind(as_)) return is_blank(line) ? Outcome::success : frame(line);
    auto bytes = parse_hex(without_end(line));
    return bytes && !bytes->empty() ? frame(without_end(line)) : log_line(line);
  }

  // The skipped line may have been the title of the next hex dump.
  Outcome skipped_line() {
    ++line_;
    reader_.forget();
    return fail(fmt::format("is longer than {} bytes, skipped", kMaxLineBytes));
  }

 private:
  static bool is_blank(const std::string& line) {
    return line.find_first_not_of(" \t\r") == std::string::npos;
  }

  static std::string without_end(const std::string& line) {
    return line.substr(0, line.find_last_not_of(" \t\r") + 1);
  }

  Outcome fail(const std::string& what) {
    std::string where = line_ != 0 ? fmt::format("decode: line {}: ", line_) : "decode: ";
    printer_.error(usage_error(where + what));
    return Outcome::usage;
  }

  Outcome log_line(const std::string& line) {
    LogEntry entry = reader_.read(line);
    if (!show_personal_ && entry.content) mask(entry.content->frame);
    printer_.log_entry(show_personal_ ? line : entry.masked, entry.content);
    return Outcome::success;
  }

  InputKind as_;
  bool show_personal_;
  Printer& printer_;
  LogReader reader_;
  size_t line_ = 0;  // 0: not reading lines
};

}  // namespace

Outcome decode_lines(std::istream& input, InputKind as, bool show_personal, Printer& printer) {
  Decoder decoder(as, show_personal, printer);
  LineReader lines(input);
  Outcome worst = Outcome::success;
  std::string line;
  for (auto read = lines.next(line); read != LineReader::Line::none; read = lines.next(line)) {
    bool is_whole = read == LineReader::Line::whole;
    worst = std::max(worst, is_whole ? decoder.line(line) : decoder.skipped_line());
  }
  return worst;
}

Outcome decode_input(const std::vector<std::string>& words, const DecodeOptions& options,
                     bool show_personal, Printer& printer) {
  if (!words.empty()) {
    return Decoder(options.as, show_personal, printer).frame(fmt::to_string(fmt::join(words, "")));
  }
  if (options.input == "-") return decode_lines(std::cin, options.as, show_personal, printer);
  std::ifstream file(options.input);
  if (file) return decode_lines(file, options.as, show_personal, printer);
  printer.error(usage_error(
      fmt::format("decode: cannot read '{}': expected a readable file", options.input)));
  return Outcome::usage;
}

}  // namespace qorextctl
