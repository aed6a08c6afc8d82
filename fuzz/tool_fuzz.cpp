// SPDX-License-Identifier: Apache-2.0
// qorextctl with any frames of a daemon and any words of a user.
#include <sstream>

#include "fuzz/support.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/decode_input.h"
#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/frames/frames.h"
#include "tools/qorextctl/frames/json_record.h"
#include "tools/qorextctl/frames/personal.h"
#include "tools/qorextctl/log/log_reader.h"
#include "tools/qorextctl/modem/modem_control.h"
#include "tools/qorextctl/modem/modem_words.h"
#include "tools/qorextctl/output/output.h"
#include "tools/qorextctl/replay/replay_script.h"
#include "tools/qorextctl/session/exchange.h"
#include "tools/qorextctl/session/session.h"
#include "tools/qorextctl/trace/trace.h"

namespace {

using namespace qorextctl;

constexpr size_t kMaxWords = 512;
constexpr size_t kMaxStretched = 500'000;
constexpr size_t kMaxLines = kMaxLineBytes + 100'000;

const Request& consume_request(FuzzedDataProvider& input) {
  auto all = catalogue();
  return all[input.ConsumeIntegralInRange<size_t>(0, all.size() - 1)];
}

// Every frame can be printed as text and as JSON.
template <class Print>
void check_output(Print print) {
  std::ostringstream out;
  std::ostringstream err;
  Printer text(out, err, false);
  text.show_hex(true);
  print(text);
  out.str("");
  Printer json(out, err, true);
  print(json);
  std::string line = out.str();
  FUZZ_REQUIRE(!line.empty() && line.find('\n') == line.size() - 1);
  FUZZ_REQUIRE(Json::parse(line).is_object());
}

// The frames taken from pieces of any size are together the bytes received.
template <class SizeOf, class Check>
void check_frames(View bytes, size_t piece, SizeOf size_of, Check check) {
  FrameBuffer buffer;
  Bytes seen;
  for (size_t at = 0; at < bytes.size(); at += piece) {
    buffer.append(part(bytes, at, piece));
    while (auto frame = buffer.take(size_of)) {
      seen.insert(seen.end(), frame->begin(), frame->end());
      check(*frame);
    }
  }
  Bytes rest = buffer.take_all();
  seen.insert(seen.end(), rest.begin(), rest.end());
  FUZZ_REQUIRE(seen == Bytes(bytes.begin(), bytes.end()));
  check(rest);
}

void check_replies(FuzzedDataProvider& input) {
  const Request& request = consume_request(input);
  auto piece = input.ConsumeIntegralInRange<size_t>(1, 4096);
  Bytes bytes = input.ConsumeRemainingBytes<uint8_t>();
  ReplyForm form = request.reply.form;
  check_frames(
      bytes, piece, [form](View pending) { return reply_size(pending, form); },
      [&request, form](View frame) {
        DecodedFrame reply = decode_reply(&request, form, request.id, frame);
        check_output([&reply](Printer& printer) { printer.reply(reply, false); });
      });
}

void check_unsolicited(FuzzedDataProvider& input) {
  auto piece = input.ConsumeIntegralInRange<size_t>(1, 4096);
  Bytes bytes = input.ConsumeRemainingBytes<uint8_t>();
  check_frames(bytes, piece, unsolicited_size, [](View frame) {
    DecodedFrame message = decode_unsolicited(frame);
    check_output([&message](Printer& printer) { printer.unsolicited(message); });
  });
}

void check_command(const std::vector<std::string>& words) {
  auto command = parse_command(words, false);
  if (!command) {
    FUZZ_REQUIRE(!command.error().message.empty());
    return;
  }
  Expected expected = expect_reply(command->bytes, command->request);
  FUZZ_REQUIRE(command->bytes.size() <= kMaxRequestBytes);
  FUZZ_REQUIRE(expected.replies >= 0 && expected.replies <= 2);
}

// A record on the command line is the name of a file, which must not be fuzzed.
bool names_file(const std::vector<std::string>& words) {
  return std::any_of(words.begin(), words.end(),
                     [](const std::string& word) { return word.starts_with("json"); });
}

void check_words(const std::string& line) {
  auto words = split_line(line);
  if (!words) return;
  if (!names_file(*words)) check_command(*words);
  if (auto modem = modem_command(*words)) {
    FUZZ_REQUIRE(modem->is_object());
    modem->dump(-1, ' ', false, Json::error_handler_t::replace);
  }
  if (auto raw = parse_raw(*words)) {
    classify(*raw);
    expect_reply(*raw, nullptr);
  }
  parse_record(line);
}

// Bytes of an unknown kind, with and without masking.
void check_decoded(FuzzedDataProvider& input) {
  constexpr FrameKind kKinds[] = {FrameKind::request, FrameKind::reply, FrameKind::unsolicited};
  auto fallback = input.PickValueInArray(kKinds);
  Bytes bytes = input.ConsumeRemainingBytes<uint8_t>();
  FrameKind kind = recognise(bytes).value_or(fallback);
  DecodedFrame frame = decode_as(kind, bytes);
  FUZZ_REQUIRE(hex_of(frame) == to_hex(bytes));
  check_output([&](Printer& printer) { printer.decoded(kind, frame); });
  mask(frame);
  FUZZ_REQUIRE(hex_of(frame).size() == 2 * bytes.size());
  check_output([&](Printer& printer) { printer.decoded(kind, frame); });
}

void check_log(FuzzedDataProvider& input) {
  LogReader reader;
  while (input.remaining_bytes() != 0) {
    std::string line = "E/RIL-QOREXT( 1): " + input.ConsumeRandomLengthString(kMaxWords);
    LogEntry entry = reader.read(line);
    check_output([&](Printer& printer) { printer.log_entry(entry.masked, entry.content); });
  }
}

// Lines of any length: lines that are too long are skipped, the others are decoded.
void check_lines(FuzzedDataProvider& input) {
  constexpr InputKind kKinds[] = {InputKind::automatic, InputKind::log, InputKind::reply};
  auto as = input.PickValueInArray(kKinds);
  std::string text = fuzz::consume_stretched(input, kMaxLines);
  std::istringstream count(text);
  LineReader lines(count);
  size_t max = 0;
  size_t bytes = 0;
  for (std::string line; lines.next(line) != LineReader::Line::none; ++bytes) {
    max = std::max(max, line.size());
    bytes += line.size();
  }
  FUZZ_REQUIRE(max <= kMaxLineBytes && bytes <= text.size() + 1);

  std::istringstream stream(text);
  std::ostringstream out;
  std::ostringstream err;
  Printer printer(out, err, false);
  decode_lines(stream, as, false, printer);
}

// A file with the first line of a recording.
void check_recording(const std::string& events) {
  std::istringstream file(
      R"({"type":"recording","version":1,"started":"","instance":0,"masked":false})"
      "\n" +
      events);
  auto recording = read_recording(file, "recording");
  if (!recording) {
    FUZZ_REQUIRE(recording.error().message.find('\n') == std::string::npos);
    return;
  }
  EventText text(false);
  std::vector<Json> shown;
  for (const Event& event : recording->events) shown.push_back(text.show(event));
  FUZZ_REQUIRE(timeline(shown)["traceEvents"].is_array());
  if (first_masked(*recording)) return;
  ReplayScript script(*recording);
  for (size_t i = 0; i < recording->events.size(); ++i) {
    if (script.request_of(i)) FUZZ_REQUIRE(script.answer(i, 1).size() >= qmi_idl::kHeaderSize);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  switch (input.ConsumeIntegralInRange(0, 9)) {
    case 0:
      check_replies(input);
      break;
    case 1:
      check_unsolicited(input);
      break;
    case 3:
      check_decoded(input);
      break;
    case 4:
      check_log(input);
      break;
    case 5:
      check_recording(input.ConsumeRemainingBytesAsString());
      break;
    case 6:
      check_recording(fuzz::consume_stretched(input, kMaxStretched));
      break;
    case 7:
      check_words(fuzz::consume_stretched(input, kMaxStretched));
      break;
    case 8:
      check_lines(input);
      break;
    default:
      check_words(input.ConsumeRandomLengthString(kMaxWords));
  }
  return 0;
}
