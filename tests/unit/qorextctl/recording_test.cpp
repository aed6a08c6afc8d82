// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/recording/recording.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/unit/qorextctl/qmi_samples.h"

namespace qorextctl {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kHeadLine =
    R"({"type":"recording","version":1,"started":"2026-11-21T10:00:00Z","instance":0,"masked":false})"
    "\n";

class ARecording : public testing::Test {
 protected:
  ~ARecording() override { std::filesystem::remove(path_); }

  // The error of a file with this text, without the path.
  std::string error_of(const std::string& text) {
    std::ofstream(path_) << text;
    auto recording = read_recording(path_);
    if (recording) return "";
    EXPECT_EQ(recording.error().outcome, Outcome::usage);
    return recording.error().message.substr(
        std::min(path_.size(), recording.error().message.size()));
  }

  Result<Recording> written_and_read(const Recording& recording) {
    std::ofstream file(path_);
    EXPECT_TRUE(write_recording(recording, file));
    return read_recording(path_);
  }

  static std::string text_of(const Recording& recording) {
    std::ostringstream text;
    write_recording(recording, text);
    return text.str();
  }

  // One event of each kind; requests, replies and messages carry personal data.
  static Recording everything(bool masked) {
    Recording recording{3, masked, "2026-11-21T10:00:00Z"};
    Bytes request = from_hex("0A000002 06000000 00000000 323436383130 323436383130");
    recording.events = {
        {10, FrameEvent{FrameKind::request, request}},
        {20, MessageEvent{"qorext", 4, read_request(1, 25)}},
        {30, MessageEvent{"qorext", 4, read_response(1, 25, {0x12, 0x34})}},
        {40, LogEvent{"RIL-QOREXT E 11-21 10:00:00 7 7 "
                      "qorext_hook_sprint_read_mdn_from_nv:  mdn_number 9135550142"}},
        {50, FrameEvent{FrameKind::reply, cdma_frame(0x0200000A, 0, Bytes(6, '1'))}},
        {60, FrameEvent{FrameKind::unsolicited, generic_unsolicited(0x06000200, {})}},
        {70, ServiceEvent{"nas", false}},
        {80, ExitStatus{0, 15}},
    };
    return recording;
  }

  std::string path_ = testing::TempDir() + "recording_" + std::to_string(getpid());
};

TEST_F(ARecording, IsReadAsItWasWritten) {
  auto read = written_and_read(everything(false));
  ASSERT_TRUE(read) << read.error().message;
  EXPECT_EQ(read->instance, 3U);
  EXPECT_FALSE(read->masked);
  ASSERT_EQ(read->events.size(), 8U);
  EXPECT_EQ(read->events[0].time, 10);
  EXPECT_EQ(read->events[0].line, 2U);
  EXPECT_EQ(std::get<MessageEvent>(read->events[2].what).packet,
            read_response(1, 25, {0x12, 0x34}));
  EXPECT_EQ(std::get<MessageEvent>(read->events[2].what).client, 4U);
  EXPECT_EQ(std::get<FrameEvent>(read->events[5].what).kind, FrameKind::unsolicited);
  EXPECT_FALSE(std::get<ServiceEvent>(read->events[6].what).is_up);
  EXPECT_EQ(std::get<ExitStatus>(read->events[7].what).signal, 15);
  EXPECT_EQ(first_masked(*read), nullptr);
  EXPECT_EQ(text_of(*read), text_of(everything(false)));
}

TEST_F(ARecording, ContainsNoPersonalDataWhenMasked) {
  std::string text = text_of(everything(true));
  for (const char* personal : {"246810", "323436383130", "1234", "9135550142", "3131313131"}) {
    EXPECT_THAT(text, Not(HasSubstr(personal)));
    EXPECT_THAT(text_of(everything(false)), HasSubstr(personal));
  }
  EXPECT_THAT(text, HasSubstr(R"("masked":true)"));
  EXPECT_THAT(text, HasSubstr("mdn_number ***"));
}

TEST_F(ARecording, HasAFirstMaskedEventAndShowsTheSameText) {
  auto read = written_and_read(everything(true));
  ASSERT_TRUE(read) << read.error().message;
  ASSERT_NE(first_masked(*read), nullptr);
  EXPECT_EQ(first_masked(*read)->line, 2U);
  EXPECT_EQ(text_of(*read), text_of(everything(true)));
}

TEST_F(ARecording, IsMaskedByDefaultWhenShown) {
  auto read = written_and_read(everything(false));
  ASSERT_TRUE(read);
  EventText text(false);
  std::string shown;
  for (const Event& event : read->events) shown += text.show(event).dump();
  EXPECT_THAT(shown, Not(HasSubstr("9135550142")));
  EXPECT_THAT(shown, Not(HasSubstr("1234")));
}

TEST_F(ARecording, IsRejectedWithTheNumberOfTheFaultyLine) {
  std::string other_version = kHeadLine;
  other_version.replace(other_version.find("\"version\":1"), 11, "\"version\":2");
  const char* later = R"({"type":"log","time":5,"line":""})";
  const char* earlier = R"({"type":"log","time":4,"line":""})";
  const std::pair<std::string, std::string> kFiles[] = {
      {"", "is empty, expected a recording"},
      {"no json\n", "line 1: is not a JSON object"},
      {later, "line 1: is not the head of a recording"},
      {other_version, "line 1: version 2 is not supported, expected 1"},
      {kHeadLine + (later + ("\n" + std::string(earlier))),
       "line 3: is earlier than the line before"},
  };
  for (const auto& [text, error] : kFiles) EXPECT_EQ(error_of(text), ": " + error);
}

TEST_F(ARecording, IsRejectedWithTheFaultOfAnEvent) {
  std::string deep = std::string(200'000, '[') + std::string(200'000, ']');
  const std::pair<std::string, const char*> kEvents[] = {
      {"[]", "is not a JSON object"},
      {std::string(2'000'000, ' '), "is longer than 1048576 bytes"},
      {R"({"type":"frame","time":1,"kind":"reply","hex":"**","fields":)" + deep + "}",
       "is nested deeper than 64 levels"},
      {R"({"type":"log","line":"x"})", "'time' is missing"},
      {R"({"type":"log","time":-1,"line":"x"})",
       "'time': -1 is out of range (0 to 9223372036854775807)"},
      {R"({"type":"log","time":"now","line":"x"})", "'time': expected a number"},
      {R"({"type":"log","time":0,"line":7})", "'line': expected a string"},
      {R"({"type":"tape","time":0})", "unknown type 'tape'"},
      {R"({"type":"frame","time":0,"kind":"letter","hex":"00"})", "unknown kind of frame 'letter'"},
      {R"({"type":"frame","time":0,"kind":"reply","hex":"0"})",
       "'hex': expected pairs of hexadecimal digits"},
      {R"({"type":"message","time":0,"service":"wds","client":1,"hex":"00"})",
       "unknown service 'wds'"},
      {R"({"type":"message","time":0,"service":"nas","client":1,"hex":"00"})",
       "'hex' is not a QMI message"},
      {R"({"type":"service","time":0,"name":"nas","up":1})", "'up': expected true or false"},
      {R"({"type":"exit","time":0,"status":70000,"signal":0})",
       "'status': 70000 is out of range (0 to 65535)"},
  };
  for (const auto& [event, error] : kEvents) {
    EXPECT_EQ(error_of(kHeadLine + event + "\n"), std::string(": line 2: ") + error);
  }
}

TEST_F(ARecording, ThatDoesNotExistIsRejected) {
  auto recording = read_recording("/nonexistent/recording");
  ASSERT_FALSE(recording);
  EXPECT_EQ(recording.error().message, "cannot read '/nonexistent/recording'");
}

}  // namespace
}  // namespace qorextctl
