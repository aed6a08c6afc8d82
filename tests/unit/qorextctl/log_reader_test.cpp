// SPDX-License-Identifier: Apache-2.0
// The lines of the daemon's log, their content and their masking.
#include "tools/qorextctl/log/log_reader.h"

#include <gtest/gtest.h>

#include "tests/unit/qorextctl/frame_samples.h"
#include "tools/qorextctl/frames/item_text.h"
#include "tools/qorextctl/frames/personal.h"
#include "tools/qorextctl/log/log_line.h"

namespace qorextctl {
namespace {

const std::string kHead = "E/RIL-QOREXT( 1234): ";
const std::string kDump = "HexDump: Data ";
const std::string kTunerTitle = "Dumping modem response for QMI_TUNER_REQ_V01...";
const std::string kWriteTitle = "qor_qmi_sprint_rde_write: hexdump len 3...";

std::string write_of(int item) {
  return "NV Write with RDE index " + std::to_string(item) + ", record number 0, offset 0.";
}

// The last line's entry.
LogEntry last_of(const std::vector<std::string>& texts) {
  LogReader reader;
  LogEntry entry;
  for (const std::string& text : texts) entry = reader.read(kHead + text);
  return entry;
}

std::string masked(const std::vector<std::string>& texts) {
  std::string line = last_of(texts).masked;
  EXPECT_EQ(line.substr(0, kHead.size()), kHead);
  return line.substr(kHead.size());
}

std::string shown(const std::vector<std::string>& texts) {
  LogEntry entry = last_of(texts);
  if (!entry.content) return "nothing";
  const DecodedFrame& frame = entry.content->frame;
  std::string problems;
  for (const std::string& problem : frame.problems) problems += " problem: " + problem;
  return std::string(entry.content->type) + " " + frame.name + " " + frame.id + " " +
         to_json(frame.fields).dump() + problems;
}

TEST(LogLine, AllLogFormatsAreAccepted) {
  struct {
    const char* head;
    const char* source;
    char priority;
  } const cases[] = {
      {"E/RIL-QOREXT( 1234): ", " 1234", 'E'},
      {"D/RIL-QOREXT(12345): ", "12345", 'D'},
      {"11-21 17:14:39.123 E/RIL-QOREXT( 1234): ", " 1234", 'E'},
      {"11-21 17:14:39.123  1234  1240 E RIL-QOREXT: ", "1234  1240", 'E'},
      {"2026-11-21 17:14:39.123456 +0000  1234  1240 D RIL-QOREXT: ", "1234  1240", 'D'},
      {"11-21 17:14:39.123 radio  1234  1240 E RIL-QOREXT: ", "1234  1240", 'E'},
      {"11-21 17:14:39.123  1001  1234  1240 E RIL-QOREXT: ", "1234  1240", 'E'},
      {"11-22 07:41:18.211 11922 11922 E RIL-QOREXT: ", "11922 11922", 'E'},
      {"RIL-QOREXT E 11-21 17:14:39  1234  1240 ", "1234  1240", 'E'},
  };
  for (const auto& test : cases) {
    for (const char* end : {"", "\r"}) {
      std::string line = std::string(test.head) + "  two: words " + end;
      auto parsed = parse_daemon_line(line);
      ASSERT_TRUE(parsed) << line;
      EXPECT_EQ(parsed->head, test.head);
      EXPECT_EQ(parsed->source, test.source);
      EXPECT_EQ(parsed->priority, test.priority);
      EXPECT_EQ(parsed->text, "  two: words ");
    }
  }
}

TEST(LogLine, LinesOfOtherProgramsAreRejected) {
  for (const char* line :
       {"", "--------- beginning of main", "E/RILJ    ( 1234): E/RIL-QOREXT( 1): x",
        "11-21 17:14:39.123  1234  1240 E RILJ    : RIL-QOREXT: x", "RIL-QOREXT",
        "11-21 17:14:39.123  1234  1240 E RIL-QOREXT2: x", "E/RIL-QOREXT(x): y"}) {
    EXPECT_FALSE(parse_daemon_line(line)) << line;
  }
  EXPECT_FALSE(parse_daemon_line(std::string(1'000'000, ' ') + "E/RIL-QOREXT( 1): x"));
  EXPECT_TRUE(parse_daemon_line(kHead + std::string(1'000'000, 'x')));
}

TEST(LogReader, DecodesAReplyFrame) {
  EXPECT_EQ(shown({"handleNvRsp: response hexdump for p_respHdr->msgId 0x200000d...",
                   kDump + "0D00000204000000000000000000000000001E0000000000"}),
            "reply read-item-10003 0x0200000D {\"data\":\"1E000000\",\"value\":30}");
}

TEST(LogReader, DecodesAnItemByItsNumber) {
  EXPECT_EQ(shown({write_of(2), kWriteTitle, kDump + "000009"}),
            R"(nv-item overload-class 2 {"nam":0,"overload_class":9})");
  EXPECT_EQ(shown({write_of(8), kWriteTitle,
                   kDump + "00030109"
                           "0A000000000000000000000000"}),
            R"(nv-item mdn 8 {"nam":0,"count":3,"mdn":"190"})");
  EXPECT_EQ(
      shown({"Gen NV Write RdeId 7000, rec num 1, offset 2, len 3. hexdump...", kDump + "C0FFEE"}),
      R"(nv-item  7000 {"record":1,"offset":2,"data":"C0FFEE"})");
  EXPECT_EQ(shown({"NV Read with RDE index (28), recordNum(0), offset(0).",
                   "NV Read 28, length 1, data length 1, grde - 06"}),
            R"(nv-item mob-p-rev 28 {"mob_p_rev":6})");
  EXPECT_EQ(shown({"NV Read 28, length 0, data length 0, grde - "}), "nothing");
  EXPECT_EQ(shown({"NV Read 29, length 1, data length 1, grde - 00"}),
            R"(nv-item primary-channels 29 {"nam":0} problem: primary-a is missing: the data ends )"
            "before problem: primary-b is missing: the data ends before");
}

TEST(LogReader, DecodesResponsesOfTheModem) {
  std::string record = to_hex(counting(568));
  EXPECT_EQ(shown({"Dumping modem response for QMI_DATA_PLMN_REQ_V01...", kDump + record}),
            "modem-response data-plmn 0x060001 {\"record\":\"" + record + "\"}");
  std::string tuner = to_hex(from_hex("03000000 0A0B0C"));
  tuner.resize(64, '0');
  EXPECT_EQ(shown({kTunerTitle, kDump + tuner}),
            R"(modem-response tune 0x05002A {"length":3,"data":"0A0B0C"})");
}

TEST(LogReader, DecodesTheRemainingPartOfACutLine) {
  EXPECT_EQ(shown({kTunerTitle, kDump + "020000000A0B0"}),
            R"(modem-response tune 0x05002A {"length":2,"data":"0A0B"} )"
            "problem: 6 bytes of data, 32 expected");
  EXPECT_EQ(masked({kTunerTitle, kDump + "020000000A0B0"}), kDump + "020000000A0B0");
  EXPECT_EQ(masked({"NV Read 32, length 6, data length 6, grde - 31323"}),
            "NV Read 32, length 6, data length 6, grde - ***");
  EXPECT_EQ(
      masked({"Gen NV Write RdeId 32, rec num 0, offset 0, len 6. hexdump...", kDump + "31323"}),
      kDump + "****");
}

TEST(LogReader, DecodesTheTextOfAnEngineeringRecord) {
  std::string text = to_hex(counting(52));
  std::string dump = to_hex(Bytes(text.begin(), text.end()));
  LogEntry entry = last_of({"qorext_hook_sprint_get_evdo_data() hexDump...", kDump + dump});
  ASSERT_TRUE(entry.content);
  Json fields = to_json(entry.content->frame.fields);
  EXPECT_EQ(entry.content->frame.name, "get-evdo");
  EXPECT_EQ(entry.content->frame.problems, std::vector<std::string>{});
  EXPECT_EQ(fields["channel"], 0x0201);
  EXPECT_EQ(fields["pilot_pn"], 0x0A09);
  EXPECT_EQ(fields["sector_id"][15], 45);
  EXPECT_EQ(fields["pilot_energy"], 0x302F);
  EXPECT_EQ(fields["an_auth_status"], 51);
  EXPECT_EQ(shown({"qorext_hook_sprint_get_evdo_data() hexDump...", kDump + "3047"}),
            R"(engineering get-evdo 0x02000012 {"data":"3047"} )"
            "problem: the modem's text is not hex (pairs of digits)");
}

TEST(LogReader, KeepsTheStateOfEachThread) {
  LogReader reader;
  const std::string head = "11-21 17:14:39.123  1234  ";
  reader.read(head + "1240 E RIL-QOREXT: Dumping modem response for QMI_TUNER_REQ_V01...");
  reader.read(head + "1241 E RIL-QOREXT: NV Write with RDE index 2, record number 0, offset 0.");
  reader.read(head + "1241 E RIL-QOREXT: qor_qmi_sprint_rde_write: hexdump len 3...");
  reader.read("11-21 17:14:39.123  9999  1240 E OTHER   : HexDump: Data 00");
  EXPECT_STREQ(
      reader.read(head + "1240 E RIL-QOREXT: HexDump: Data " + std::string(64, '0')).content->type,
      "modem-response");
  EXPECT_STREQ(reader.read(head + "1241 E RIL-QOREXT: HexDump: Data 000009").content->type,
               "nv-item");
}

TEST(LogReader, DoesNotChangeLinesOfOtherPrograms) {
  LogReader reader;
  for (const char* line : {"", "--------- beginning of main", "E/OTHER( 1): HexDump: Data 00",
                           "I/RILJ( 1): isSpcChanged = 1, (1 ~ 2)", "a \xFF\x01 byte"}) {
    EXPECT_EQ(reader.read(line).masked, line);
  }
}

TEST(LogReader, MasksPersonalItems) {
  for (int item : {8, 16, 17, 18, 20, 21, 22, 25, 26, 32}) {
    std::string number = std::to_string(item);
    EXPECT_EQ(masked({write_of(item), kWriteTitle, kDump + "010203"}), kDump + "******");
    EXPECT_EQ(masked({"Gen NV Write RdeId " + number + ", rec num 0, offset 1, len 3. hexdump...",
                      kDump + "010203"}),
              kDump + "******");
    EXPECT_EQ(masked({"NV Read " + number + ", length 2, data length 2, grde - 0102"}),
              "NV Read " + number + ", length 2, data length 2, grde - ****");
    // The modem may return an item without its number.
    EXPECT_EQ(masked({"NV Read with RDE index (" + number + "), recordNum(0), offset(0).",
                      "NV Read 0, length 2, data length 2, grde - 0102"}),
              "NV Read 0, length 2, data length 2, grde - ****");
  }
  EXPECT_EQ(masked({write_of(28), kWriteTitle, kDump + "06"}), kDump + "06");
}

TEST(LogReader, MasksDumpsOfUnknownContent) {
  EXPECT_EQ(masked({kDump + "010203"}), kDump + "******");
  EXPECT_EQ(masked({kWriteTitle, kDump + "010203"}), kDump + "******");
  EXPECT_EQ(masked({"Gen NV Write RdeId x", kDump + "010203"}), kDump + "******");
  EXPECT_EQ(masked({kTunerTitle, kDump + std::string(64, '0'), kDump + "01"}), kDump + "**");
  EXPECT_EQ(masked({kDump + "01020"}), kDump + "***");
  EXPECT_EQ(masked({"NV Read x, grde - 0102"}), "NV Read x, grde - ****");
  EXPECT_EQ(masked({kDump}), kDump);
}

TEST(LogReader, KeepsThePublicBytesOfAFrame) {
  EXPECT_EQ(masked({"handleNvRsp: response hexdump for p_respHdr->msgId 0x2000016...",
                    kDump + to_hex(cdma_frame(
                                0x02000016, 0,
                                from_hex("20000000 00000000 00000000 02000000 3132 00000000")))}),
            kDump +
                "160000021600000000000000000000000000"
                "20000000000000000000000002000000************0000");
}

// The public start of a line, and the rest.
// clang-format off
constexpr const char* kPersonalLines[][2] = {
    {"UTILS: req.req_data[0]", "50, req.req_data[UTILS_REQ_DATA_SIZE_V01-1] 7"},
    {"qorext_hook_sprint_read_mdn_from_nv:  mdn_number ", "57 "},
    {"qorext_hook_sprint_read_mdn_from_nv:  mdn_number incremented by 0 ", "57 "},
    {"qorext_hook_sprint_read_mdn_from_nv:  nv output ", "9 "},
    {"qorext_hook_sprint_read_mdn_from_nv:  READ NV_DIR_NUMBER_PCS_I COMPLETE ", "9135550142 "},
    {"qorext_hook_sprint_set_mdn_to_nv:  mdn_number ", "57 "},
    {"qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MDN  ", "9135550142 "},
    {"qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MIN1  ", "7284767 "},
    {"qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MIN2  ", "802 "},
    {"qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_S1  ", "7284767 "},
    {"qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_S2  ", "802 "},
    {"qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_11_12  ", "99 "},
    {"qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_MCC ", "209 "},
    {"qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_MCC_T ", "209 "},
    {"qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_11_12 ", "99 "},
    {"qorext_hook_sprint_get_nam_info: NAM INFO imsiT => ", "310009135550142 "},
    {"qorext_hook_sprint_get_nam_info: NAM INFO MIN => ", "9135550142 "},
    {"qorext_hook_sprint_get_nam_info: NAM INFO IMSI_11_12 => ", "00 "},
    {"qorext_hook_sprint_get_nam_info: NAM INFO Mcc => ", "310 MccT => 310 "},
    {"qorext_hook_sprint_set_nam_info:  SET NAM IMSI_MCC  ", "209 "},
    {"qorext_hook_sprint_set_nam_info:  SET NAM IMSI_11_12  ", "99 "},
    {"qorext_hook_sprint_set_nam_info:  SET NAM MIN1 ", "7284767 MIN2 802 "},
    {"qorext_hook_sprint_set_nam_info:  SET NAM MccT ", "209 imsiT11_12 99 imsiT_s1 7284767 imsiT_s2 802 "},
    {"isSpcChanged = 0, (", "246810 ~ 246810)"},
    {"isSpcChanged = 1, (", "246810 ~ 135791)"},
};
constexpr const char* kPublicLines[] = {
    "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE SID NID  4700 ",
    "qorext_hook_sprint_get_nam_info: NAM INFO hSid => 4700 hNid => 12 scm => 42 ",
    "qorext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK MDN  0 ",
};
// clang-format on

TEST(LogReader, MasksPersonalValuesAndNoOthers) {
  for (const auto& [start, rest] : kPersonalLines) {
    EXPECT_EQ(masked({start + std::string(rest)}), start + std::string("***"));
  }
  for (const char* line : kPublicLines) EXPECT_EQ(masked({line}), line);
}

}  // namespace
}  // namespace qorextctl
