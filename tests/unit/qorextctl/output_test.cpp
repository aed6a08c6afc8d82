// SPDX-License-Identifier: Apache-2.0
// The exact output as text and as JSON.
#include "tools/qorextctl/output/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <sstream>

#include "tests/unit/qorextctl/frame_samples.h"
#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/frames/frames.h"

namespace qorextctl {
namespace {

struct Streams {
  explicit Streams(bool json) : printer(out, err, json) {}

  std::ostringstream out;
  std::ostringstream err;
  Printer printer;
};

class Output : public testing::Test {
 protected:
  Streams text_{false};
  Streams json_{true};
};

DecodedFrame reply(const char* name, const Bytes& frame) {
  const Request* request = find_request(name);
  return decode_reply(request, request->reply.form, request->id, frame);
}

DecodedFrame nv_reply() {
  return reply("nv-read", cdma_frame(0x02000016, 0,
                                     from_hex("1C000000 00000000 00000000 01000000 06 00000000")));
}

TEST_F(Output, AReplyHasATitleAndAlignedFields) {
  text_.printer.reply(nv_reply(), false);
  EXPECT_EQ(text_.out.str(),
            "nv-read (0x02000016): success, 21 bytes\n"
            "  rde-id:  28\n"
            "  record:  0\n"
            "  offset:  0\n"
            "  length:  1\n"
            "  data:    06\n");
}

TEST_F(Output, AReplyAsJsonIsOneLine) {
  json_.printer.reply(nv_reply(), false);
  EXPECT_EQ(
      json_.out.str(),
      R"({"type":"reply","name":"nv-read","id":"0x02000016","status":0,"status_name":"success",)"
      R"("length":21,"fields":{"rde_id":28,"record":0,"offset":0,"length":1,"data":"06"},)"
      R"("problems":[],"hex":"160000021500000000000000000000000000)"
      R"(1C00000000000000000000000100000006000000000000","second":false})"
      "\n");
}

TEST_F(Output, NamesTheStatusAndMarksASecondReply) {
  text_.printer.reply(reply("set-profile", cdma_frame(0x020000B5, 5, {})), false);
  text_.printer.reply(reply("set-profile", cdma_frame(0x020000B5, 6, {})), true);
  text_.printer.reply(reply("set-profile", cdma_frame(0x020000B5, 9, {})), false);
  EXPECT_EQ(text_.out.str(),
            "set-profile (0x020000B5): failure\n"
            "set-profile (0x020000B5), second reply: obsolete or not supported\n"
            "set-profile (0x020000B5): unknown status 9\n");
}

TEST_F(Output, ProblemsFollowTheFields) {
  text_.printer.reply(reply("get-bc10", cdma_frame(0x020000B0, 0, {1})), false);
  EXPECT_EQ(text_.out.str(),
            "get-bc10 (0x020000B0): success, 1 byte\n"
            "  problem: 1 bytes of data, 4 expected\n"
            "  problem: band is missing: the data ends before\n");
}

TEST_F(Output, ShowsHexOnRequest) {
  text_.printer.show_hex(true);
  text_.printer.reply(
      decode_reply(nullptr, ReplyForm::generic, 0x50506, from_hex("01050506 FFFFFFFF")), false);
  EXPECT_EQ(text_.out.str(),
            "unknown (0x050506): obsolete or not supported\n"
            "  hex: 01050506FFFFFFFF\n");
}

TEST_F(Output, ColoursDoNotChangeTheText) {
  text_.printer.use_colours(Colours(true), Colours(true));
  text_.printer.reply(reply("set-profile", cdma_frame(0x020000B5, 5, {})), false);
  text_.printer.reply(reply("get-bc10", cdma_frame(0x020000B0, 0, {})), false);
  text_.printer.error(usage_error("no such thing"));
  EXPECT_EQ(text_.out.str(),
            "\x1B[1mset-profile\x1B[0m (0x020000B5): \x1B[31mfailure\x1B[0m\n"
            "\x1B[1mget-bc10\x1B[0m (0x020000B0): \x1B[32msuccess\x1B[0m\n"
            "  \x1B[31mproblem:\x1B[0m 0 bytes of data, 4 expected\n"
            "  \x1B[31mproblem:\x1B[0m band is missing: the data ends before\n");
  EXPECT_EQ(text_.err.str(), "\x1B[31mqorextctl:\x1B[0m no such thing\n");
}

TEST_F(Output, JsonHasNoColours) {
  json_.printer.use_colours(Colours(true), Colours(false));
  json_.printer.reply(reply("set-profile", cdma_frame(0x020000B5, 5, {})), false);
  json_.printer.error(usage_error("no such thing"));
  EXPECT_EQ(json_.out.str().find('\x1B'), std::string::npos);
}

TEST_F(Output, UsesColoursAtATerminalUnlessTheEnvironmentForbidsIt) {
  auto painted = [](ColourWhen when, int fd) {
    return Colours::choose(when, fd).title("x") != "x";
  };
  int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_EQ(isatty(terminal), 1);
  auto pipe = make_pipe();
  unsetenv("NO_COLOR");
  setenv("TERM", "xterm", 1);
  EXPECT_TRUE(painted(ColourWhen::automatic, terminal));
  EXPECT_FALSE(painted(ColourWhen::automatic, pipe->write.get()));
  EXPECT_TRUE(painted(ColourWhen::always, pipe->write.get()));
  EXPECT_FALSE(painted(ColourWhen::never, terminal));
  setenv("NO_COLOR", "", 1);
  EXPECT_TRUE(painted(ColourWhen::automatic, terminal));
  setenv("NO_COLOR", "1", 1);
  EXPECT_FALSE(painted(ColourWhen::automatic, terminal));
  EXPECT_TRUE(painted(ColourWhen::always, terminal));
  unsetenv("NO_COLOR");
  setenv("TERM", "dumb", 1);
  EXPECT_FALSE(painted(ColourWhen::automatic, terminal));
  close(terminal);
}

TEST_F(Output, AListAndARecordHaveOneLine) {
  Bytes tot = from_hex("0200 01000000 02000000");
  tot.resize(62);
  Bytes apns(1017);
  text_.printer.reply(reply("get-tot", cdma_frame(0x020000C4, 0, tot)), false);
  text_.printer.reply(reply("get-apn", cdma_frame(0x020000C1, 0, apns)), false);
  apns[0] = 1;
  apns[1] = 'a';
  text_.printer.reply(reply("get-apn", cdma_frame(0x020000C1, 0, apns)), false);
  EXPECT_EQ(text_.out.str(),
            "get-tot (0x020000C4): success, 62 bytes\n"
            "  count:    2\n"
            "  entries:  1 2\n"
            "get-apn (0x020000C1): success, 1017 bytes\n"
            "  count:  0\n"
            "  apns:   none\n"
            "get-apn (0x020000C1): success, 1017 bytes\n"
            "  count:   1\n"
            "  apns 1:  name a, first-value 0, second-value 0, "
            "remaining-bytes 00000000000000000000000000000000\n");
}

TEST_F(Output, AnUnsolicitedFrameHasATitle) {
  text_.printer.unsolicited(decode_unsolicited(cdma_unsolicited(0x020001B0, from_hex("FFFF0000"))));
  text_.printer.unsolicited(decode_unsolicited(generic_unsolicited(0x06000200, {})));
  EXPECT_EQ(text_.out.str(),
            "unsolicited carrier-event (0x020001B0): 4 bytes\n"
            "  value:  65535\n"
            "unsolicited generic (0x06000200)\n");
  json_.printer.unsolicited(decode_unsolicited(generic_unsolicited(0x04001500, {9})));
  EXPECT_EQ(json_.out.str(),
            R"({"type":"unsolicited","name":"utils-9","id":"0x04001500","status":null,)"
            R"("status_name":null,"length":1,"fields":{"value":9},"problems":[],)"
            R"("hex":"010000000800000000150004010000000)"
            R"(9000000000000000000000000"})"
            "\n");
}

TEST_F(Output, ReportsTheEndOfTheDaemon) {
  text_.printer.daemon_exit({0, 0});
  text_.printer.daemon_exit({0, 11});
  EXPECT_EQ(text_.out.str(),
            "daemon ended with exit status 0\n"
            "daemon ended with signal 11 (Segmentation fault)\n");
  json_.printer.daemon_exit({3, 0});
  json_.printer.daemon_exit({0, 11});
  EXPECT_EQ(json_.out.str(), R"({"type":"exit","status":3,"signal":null})"
                             "\n"
                             R"({"type":"exit","status":null,"signal":11})"
                             "\n");
}

TEST_F(Output, ShowsAnAnswerOfTheModem) {
  text_.printer.modem_answer("indicate", {{"ok", true}});
  text_.printer.modem_answer("version", {{"ok", true}, {"version", "1"}});
  text_.printer.modem_answer("nv", {{"ok", false}, {"error", "no such item"}});
  EXPECT_EQ(text_.out.str(),
            "modem indicate: ok\n"
            "modem version: ok\n{\n  \"version\": \"1\"\n}\n"
            "modem nv: refused\n{\n  \"error\": \"no such item\"\n}\n");
  json_.printer.modem_answer("quit", {{"ok", true}});
  EXPECT_EQ(json_.out.str(), R"({"type":"modem","command":"quit","answer":{"ok":true}})"
                             "\n");
}

TEST_F(Output, AnErrorIsALineAndAJsonObject) {
  text_.printer.error(usage_error("no such thing"));
  EXPECT_EQ(text_.out.str(), "");
  EXPECT_EQ(text_.err.str(), "qorextctl: no such thing\n");
  json_.printer.error(transport_error("gone"));
  EXPECT_EQ(json_.out.str(), "{\"type\":\"error\",\"outcome\":3,\"message\":\"gone\"}\n");
  EXPECT_EQ(json_.err.str(), "qorextctl: gone\n");
}

TEST_F(Output, ShowsOnlyTheEndOfALongLog) {
  text_.printer.log_tail("a log", std::vector<std::string>(100, "line"));
  EXPECT_EQ(text_.err.str().substr(0, 40), "a log, last 60 of 100 lines:\n  line\n  li");
  Streams empty(false);
  empty.printer.log_tail("a log", {});
  EXPECT_EQ(empty.err.str(), "");
}

TEST_F(Output, MasksTheLogUnlessPersonalDataIsRequested) {
  const std::string head = "11-22 07:41:18.211 11922 11922 E RIL-QOREXT: ";
  const std::vector<std::string> lines = {head + "qor_qmi_sprint_rde_write: hexdump len 6...",
                                          head + "HexDump: Data 323436383130",
                                          head + "isSpcChanged = 0, (246810 ~ 246810)"};
  Streams masked(false);
  for (const std::string& line : lines) masked.printer.log_line(line);
  EXPECT_EQ(masked.err.str(), lines[0] + "\n" + head + "HexDump: Data ************\n" + head +
                                  "isSpcChanged = 0, (***\n");
  Streams tail(false);
  tail.printer.log_tail("a log", lines);
  EXPECT_EQ(tail.err.str().find("46810"), std::string::npos);
  Streams clear(false);
  clear.printer.show_personal(true);
  for (const std::string& line : lines) clear.printer.log_line(line);
  EXPECT_EQ(clear.err.str(), lines[0] + "\n" + lines[1] + "\n" + lines[2] + "\n");
}

// The content of the dump is given by a line that is not shown.
TEST_F(Output, ReadsALogFromItsStart) {
  const std::string head = "E/RIL-QOREXT( 1): ";
  std::vector<std::string> lines(70, "of another program");
  lines.front() = head + "handleNvRsp: response hexdump for p_respHdr->msgId 0x200000d...";
  lines.back() = head + "HexDump: Data 0D00000204000000000000000000000000001E0000000000";
  text_.printer.log_tail("a log", lines);
  EXPECT_NE(text_.err.str().find(lines.back()), std::string::npos);
}

TEST_F(Output, TheListHasNamesIdsAndArguments) {
  text_.printer.request_list(
      {find_request("nv-read"), find_request("silent-reboot"), find_request("cdma")});
  EXPECT_EQ(text_.out.str(),
            "nv-read               0x02000016  read an NV item\n"
            "                                  rde-id= [record=] [offset=] [length=]\n"
            "silent-reboot         0x050019    prepare a silent reboot\n"
            "cdma                  any         any CDMA-hook request\n"
            "                                  id= [status=] [code=] [data=]\n");
}

TEST_F(Output, TheListOfOneRequestHasItsArguments) {
  text_.printer.request_list({find_request("nv-write")});
  EXPECT_EQ(text_.out.str(),
            "nv-write              0x02000015  write an NV item\n"
            "  rde-id=          element number (0 to 4294967295; required)\n"
            "  record=          record number (0 to 4294967295; default 0)\n"
            "  offset=          first byte within the item (0 to 4294967295; default 0)\n"
            "  length=          bytes to write (0 to 4294967295; default the length of data)\n"
            "  data=            the bytes; the modem takes at most 512 (hex bytes; required)\n");
}

TEST_F(Output, TheListAsJsonHasOneObjectPerRequest) {
  json_.printer.request_list({find_request("factory-reset"), find_request("set-profile")});
  EXPECT_EQ(
      json_.out.str(),
      R"({"type":"request","name":"factory-reset","family":"cdma","id":"0x020000B6",)"
      R"("description":"reset the modem's settings","arguments":[{"name":"flag",)"
      R"("required":false,"accepts":"0 to 255","otherwise":"left out",)"
      R"("help":"reset flag; the daemon passes 255 when it is left out"}],"json_record":false,"reply_fields":[],"replies":1})"
      "\n"
      R"({"type":"request","name":"set-profile","family":"cdma","id":"0x020000B5",)"
      R"("description":"switch the active profile","arguments":[{"name":"profile",)"
      R"("required":true,"accepts":"-2147483648 to 2147483647","otherwise":"required",)"
      R"("help":"profile number"}],"json_record":false,"reply_fields":[],"replies":2})"
      "\n");
}

}  // namespace
}  // namespace qorextctl
