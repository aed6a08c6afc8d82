// SPDX-License-Identifier: Apache-2.0
// The exact output of "qorextctl decode".
#include "tools/qorextctl/decode_input.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/unit/platform/temp_folder.h"
#include "tests/unit/qorextctl/frame_samples.h"

namespace qorextctl {
namespace {

class DecodeInput : public testing::Test {
 protected:
  Outcome words(const std::vector<std::string>& words, DecodeOptions options = {}) {
    return run(words, options);
  }

  Outcome lines(const std::string& text, InputKind as = InputKind::automatic) {
    test_support::TempFolder folder;
    std::ofstream(folder / "input", std::ios::binary) << text;
    return run({}, {as, folder / "input"});
  }

  bool json_ = false;
  bool show_personal_ = false;
  std::ostringstream out_;
  std::ostringstream err_;

 private:
  Outcome run(const std::vector<std::string>& words, const DecodeOptions& options) {
    Printer printer(out_, err_, json_);
    return decode_input(words, options, show_personal_, printer);
  }
};

const std::string kCheck = "0A000002 06000000 00000000 323436383130 323436383130";

constexpr const char* kLog =
    "--------- beginning of main\n"
    "11-21 17:14:39.123  1234  1240 E RIL-QOREXT: NV Read 28, length 1, data length 1, grde - 06\n"
    "11-21 17:14:39.124  1234  1240 E RIL-QOREXT: isSpcChanged = 0, (246810 ~ 246810)\n"
    "11-21 17:14:39.125  1234  1240 E RIL-QOREXT: NV Read 32, length 6, data length 6, "
    "grde - 323436383130\n"
    "11-21 17:14:39.126  1234  1240 E RIL-QOREXT: Dumping modem response for "
    "QMI_TUNER_REQ_V01...\n"
    "11-21 17:14:39.127  1234  1240 E RIL-QOREXT: HexDump: Data 020000000A0B\n";

TEST_F(DecodeInput, ShowsAFrameOfEachKind) {
  EXPECT_EQ(words({"16000002", "10000000", "00000000", "000000000000", "1C000000", "01000000",
                   "02000000", "03000000"}),
            Outcome::success);
  EXPECT_EQ(words({to_hex(cdma_unsolicited(0x020001B0, from_hex("07000000")))}), Outcome::success);
  EXPECT_EQ(words({"01050019 00000000"}), Outcome::success);
  EXPECT_EQ(words({"01050019 00000000"}, {InputKind::reply, "-"}), Outcome::success);
  EXPECT_EQ(out_.str(),
            "request nv-read (0x02000016): 16 bytes\n"
            "  rde-id:  28\n"
            "  record:  1\n"
            "  offset:  2\n"
            "  length:  3\n"
            "unsolicited carrier-event (0x020001B0): 4 bytes\n"
            "  value:  7\n"
            "request silent-reboot (0x050019)\n"
            "reply silent-reboot (0x050019): success\n"
            "  data:\n");
}

TEST_F(DecodeInput, ShowsAFrameAsJson) {
  json_ = true;
  EXPECT_EQ(words({to_hex(cdma_frame(0x020000BC, 0, from_hex("4D000000")))}), Outcome::success);
  EXPECT_EQ(out_.str(), R"({"type":"reply","name":"get-bsr-timer","id":"0x020000BC","status":0,)"
                        R"("status_name":"success","length":4,"fields":{"timer":77},"problems":[],)"
                        R"("hex":"BC00000204000000000000000000000000004D0000000000"})"
                        "\n");
}

TEST_F(DecodeInput, MasksPersonalFieldsUnlessTheyAreRequested) {
  EXPECT_EQ(words({kCheck}), Outcome::success);
  show_personal_ = true;
  EXPECT_EQ(words({kCheck}), Outcome::success);
  EXPECT_EQ(out_.str(),
            "request check-spc (0x0200000A): 6 bytes\n  code:  ***\n"
            "request check-spc (0x0200000A): 6 bytes\n  code:  246810\n");
}

TEST_F(DecodeInput, MasksTheBytesOfAFrameInJson) {
  json_ = true;
  EXPECT_EQ(words({kCheck}), Outcome::success);
  EXPECT_EQ(out_.str(),
            R"({"type":"request-frame","name":"check-spc","id":"0x0200000A","status":null,)"
            R"("status_name":null,"length":6,"fields":{"code":"***"},"problems":[],)"
            R"("hex":"0A0000020600000000000000************************"})"
            "\n");
}

TEST_F(DecodeInput, LinesOfHexAreFrames) {
  EXPECT_EQ(lines("01050019 00000000\r\n\n" + kCheck + "\n01050506 FFFFFFFF"), Outcome::success);
  EXPECT_EQ(out_.str(),
            "request silent-reboot (0x050019)\n"
            "\n"
            "request check-spc (0x0200000A): 6 bytes\n  code:  ***\n"
            "reply unknown (0x050506): obsolete or not supported\n");
}

constexpr size_t kTooLong = (1 << 20) + 1;
const std::string kTag = "E/RIL-QOREXT( 1): ";

TEST_F(DecodeInput, SkipsATooLongLineWithOneWarning) {
  std::string long_line = kTag + "isSpcChanged = 0, (246810 ~ 246810)" + std::string(kTooLong, 'x');
  std::string long_frame(kTooLong, 'A');
  EXPECT_EQ(lines("first\n" + long_line + "\nsecond\n" + long_frame + "\n01050019 00000000\n" +
                  long_line),
            Outcome::usage);
  EXPECT_EQ(out_.str(), "first\nsecond\nrequest silent-reboot (0x050019)\n");
  EXPECT_EQ(err_.str(),
            "qorextctl: decode: line 2: is longer than 1048576 bytes, skipped\n"
            "qorextctl: decode: line 4: is longer than 1048576 bytes, skipped\n"
            "qorextctl: decode: line 6: is longer than 1048576 bytes, skipped\n");
}

TEST_F(DecodeInput, ShowsALineOfMaximumLength) {
  std::string line(kTooLong - 1, 'x');
  EXPECT_EQ(lines(line + "\n" + line), Outcome::success);
  EXPECT_EQ(out_.str(), line + "\n" + line + "\n");
  EXPECT_EQ(err_.str(), "");
}

TEST_F(DecodeInput, MasksADumpAfterASkippedLineCompletely) {
  EXPECT_EQ(lines(kTag + "Dumping modem response for QMI_TUNER_REQ_V01...\n" + kTag +
                  std::string(kTooLong, 'x') + "\n" + kTag + "HexDump: Data 020000000A0B\n"),
            Outcome::usage);
  EXPECT_EQ(out_.str(), kTag + "Dumping modem response for QMI_TUNER_REQ_V01...\n" + kTag +
                            "HexDump: Data ************\n");
}

TEST_F(DecodeInput, LimitsTheThreadsOfALog) {
  std::string log = "E/RIL-QOREXT( 1): Dumping modem response for QMI_TUNER_REQ_V01...\n";
  for (int i = 2; i < 2000; ++i) log += "E/RIL-QOREXT(" + std::to_string(i) + "): x\n";
  lines(log + "E/RIL-QOREXT( 1): HexDump: Data 020000000A0B\n");
  EXPECT_TRUE(out_.str().ends_with("HexDump: Data ************\n"));
}

TEST_F(DecodeInput, ShowsALogWithItsContent) {
  EXPECT_EQ(lines(kLog), Outcome::success);
  EXPECT_EQ(out_.str(),
            "--------- beginning of main\n"
            "11-21 17:14:39.123  1234  1240 E RIL-QOREXT: NV Read 28, length 1, data length 1, "
            "grde - 06\n"
            "  | nv-item mob-p-rev (28): 1 byte\n"
            "  |   mob-p-rev:  6\n"
            "11-21 17:14:39.124  1234  1240 E RIL-QOREXT: isSpcChanged = 0, (***\n"
            "11-21 17:14:39.125  1234  1240 E RIL-QOREXT: NV Read 32, length 6, data length 6, "
            "grde - ************\n"
            "  | nv-item spc (32): 6 bytes\n"
            "  |   spc:  ***\n"
            "11-21 17:14:39.126  1234  1240 E RIL-QOREXT: Dumping modem response for "
            "QMI_TUNER_REQ_V01...\n"
            "11-21 17:14:39.127  1234  1240 E RIL-QOREXT: HexDump: Data 020000000A0B\n"
            "  | modem-response tune (0x05002A): 6 bytes\n"
            "  |   length:  2\n"
            "  |   data:    0A0B\n"
            "  |   problem: 6 bytes of data, 32 expected\n");
}

TEST_F(DecodeInput, ShowsALogAsOneObjectPerLine) {
  json_ = true;
  EXPECT_EQ(
      lines("a \xFF\tline\nE/RIL-QOREXT( 1): NV Read 32, length 1, data length 1, grde - 31\n"),
      Outcome::success);
  EXPECT_EQ(out_.str(),
            R"({"type":"log","line":"a \\xFF\\x09line","decoded":null})"
            "\n"
            R"({"type":"log","line":"E/RIL-QOREXT( 1): NV Read 32, length 1, data length 1, )"
            R"(grde - **","decoded":{"type":"nv-item","name":"spc","id":"32","status":null,)"
            R"("status_name":null,"length":1,"fields":{},)"
            R"("problems":["spc is missing: the data ends before"],"hex":"**"}})"
            "\n");
}

TEST_F(DecodeInput, ShowsALogInClearTextOnRequest) {
  show_personal_ = true;
  EXPECT_EQ(lines(kLog), Outcome::success);
  EXPECT_NE(out_.str().find("isSpcChanged = 0, (246810 ~ 246810)\n"), std::string::npos);
  EXPECT_NE(out_.str().find("grde - 323436383130\n"), std::string::npos);
  EXPECT_NE(out_.str().find("  |   spc:  246810\n"), std::string::npos);
}

TEST_F(DecodeInput, AMalformedFrameIsRefused) {
  EXPECT_EQ(words({"B1000002 05000000 00000000 000000000000 01000000"}), Outcome::refused);
  EXPECT_EQ(out_.str(),
            "request set-bc10 (0x020000B1): 5 bytes\n"
            "  status:  ***\n"
            "  problem: the length field says 5, the frame has 22 bytes instead of 23\n");
}

TEST_F(DecodeInput, BytesThatAreNotAFrameAreWrongUsage) {
  EXPECT_EQ(words({"0G"}), Outcome::usage);
  EXPECT_EQ(words({"FF"}), Outcome::usage);
  EXPECT_EQ(lines("01050019 00000000\nFFFF\n"), Outcome::usage);
  EXPECT_EQ(lines("not hex\n", InputKind::reply), Outcome::usage);
  EXPECT_EQ(err_.str(),
            "qorextctl: decode: not hex (pairs of digits)\n"
            "qorextctl: decode: not a known frame (1 bytes); --as request, reply or unsolicited "
            "decodes it anyway\n"
            "qorextctl: decode: line 2: not a known frame (2 bytes); --as request, reply or "
            "unsolicited decodes it anyway\n"
            "qorextctl: decode: line 1: not hex (pairs of digits)\n");
}

TEST_F(DecodeInput, LinesOfHexMayBeReadAsALog) {
  EXPECT_EQ(lines("FFFF\n", InputKind::log), Outcome::success);
  EXPECT_EQ(out_.str(), "FFFF\n");
}

TEST_F(DecodeInput, AnUnreadableFileIsWrongUsage) {
  EXPECT_EQ(words({}, {InputKind::automatic, "/nowhere/log"}), Outcome::usage);
  EXPECT_EQ(err_.str(),
            "qorextctl: decode: cannot read '/nowhere/log': expected a readable file\n");
}

}  // namespace
}  // namespace qorextctl
