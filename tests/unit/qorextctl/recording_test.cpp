// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/recording/recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
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

  // What is wrong with a file of this text.
  std::string error_of(const std::string& text) {
    std::ofstream(path_) << text;
    auto recording = read_recording(path_);
    if (recording) return "";
    EXPECT_EQ(recording.error().outcome, Outcome::usage);
    return recording.error().message.substr(
        std::min(path_.size(), recording.error().message.size()));
  }
  std::string error_of_line(const std::string& line) { return error_of(kHeadLine + line + "\n"); }

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

  // One of everything; the requests, replies and messages are full of personal data.
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

TEST_F(ARecording, HoldsNoPersonalDataWhenItIsMasked) {
  std::string text = text_of(everything(true));
  for (const char* personal : {"246810", "323436383130", "1234", "9135550142", "3131313131"}) {
    EXPECT_THAT(text, Not(HasSubstr(personal)));
    EXPECT_THAT(text_of(everything(false)), HasSubstr(personal));
  }
  EXPECT_THAT(text, HasSubstr(R"("masked":true)"));
  EXPECT_THAT(text, HasSubstr("mdn_number ***"));
}

TEST_F(ARecording, TellsWhereItIsMaskedAndShowsWhatItShowed) {
  auto read = written_and_read(everything(true));
  ASSERT_TRUE(read) << read.error().message;
  ASSERT_NE(first_masked(*read), nullptr);
  EXPECT_EQ(first_masked(*read)->line, 2U);
  EXPECT_EQ(text_of(*read), text_of(everything(true)));
}

TEST_F(ARecording, KeepsTheDefaultMaskWhenItIsShownAgain) {
  auto read = written_and_read(everything(false));
  ASSERT_TRUE(read);
  EventText text(false);
  std::string shown;
  for (const Event& event : read->events) shown += text.show(event).dump();
  EXPECT_THAT(shown, Not(HasSubstr("9135550142")));
  EXPECT_THAT(shown, Not(HasSubstr("1234")));
}

TEST_F(ARecording, IsRefusedWithTheLineThatIsWrong) {
  EXPECT_EQ(error_of(""), ": is no recording, it is empty");
  EXPECT_EQ(error_of("no json\n"), ": line 1: is no JSON object");
  EXPECT_EQ(error_of(R"({"type":"log","time":0,"line":""})"),
            ": line 1: is not the head of a recording");
  EXPECT_EQ(error_of_line("[]"), ": line 2: is no JSON object");
  EXPECT_EQ(error_of_line(R"({"type":"frame","time":1,"kind":"reply","hex":"**","fields":)" +
                          std::string(200'000, '[') + std::string(200'000, ']') + "}"),
            ": line 2: is nested deeper than 64 levels");
  EXPECT_EQ(error_of_line(std::string(2'000'000, ' ')), ": line 2: is longer than 1048576 bytes");
  EXPECT_EQ(error_of_line(R"({"type":"log","line":"x"})"), ": line 2: has no 'time'");
  EXPECT_EQ(error_of_line(R"({"type":"log","time":-1,"line":"x"})"),
            ": line 2: 'time' is no number from 0");
  EXPECT_EQ(error_of_line(R"({"type":"log","time":0,"line":7})"), ": line 2: 'line' is no text");
  EXPECT_EQ(error_of_line(R"({"type":"tape","time":0})"), ": line 2: there is no type 'tape'");
  EXPECT_EQ(error_of_line(R"({"type":"frame","time":0,"kind":"letter","hex":"00"})"),
            ": line 2: there is no kind of frame 'letter'");
  EXPECT_EQ(error_of_line(R"({"type":"frame","time":0,"kind":"reply","hex":"0"})"),
            ": line 2: 'hex' is no hex (pairs of digits)");
  EXPECT_EQ(error_of_line(R"({"type":"message","time":0,"service":"wds","client":1,"hex":"00"})"),
            ": line 2: there is no service 'wds'");
  EXPECT_EQ(error_of_line(R"({"type":"message","time":0,"service":"nas","client":1,"hex":"00"})"),
            ": line 2: 'hex' is no QMI message");
  EXPECT_EQ(error_of_line(R"({"type":"service","time":0,"name":"nas","up":1})"),
            ": line 2: 'up' is neither true nor false");
  EXPECT_EQ(error_of_line(R"({"type":"exit","time":0,"status":70000,"signal":0})"),
            ": line 2: 'status' is too large");
}

TEST_F(ARecording, IsRefusedWhenItsTimesGoBack) {
  EXPECT_EQ(error_of_line(R"({"type":"log","time":5,"line":""})"
                          "\n"
                          R"({"type":"log","time":4,"line":""})"),
            ": line 3: is earlier than the line before");
}

TEST_F(ARecording, OfAnotherVersionIsRefused) {
  std::string head = kHeadLine;
  head.replace(head.find("\"version\":1"), 11, "\"version\":2");
  EXPECT_EQ(error_of(head), ": line 1: version 2 is not known, only 1");
}

TEST_F(ARecording, ThatIsNotThereIsRefused) {
  auto recording = read_recording("/nonexistent/recording");
  ASSERT_FALSE(recording);
  EXPECT_EQ(recording.error().message, "cannot read '/nonexistent/recording'");
}

}  // namespace
}  // namespace qorextctl
