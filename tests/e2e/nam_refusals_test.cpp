// SPDX-License-Identifier: Apache-2.0
// The service programming code, unreadable and unwritable items, SID/NID pairs.
#include "tests/e2e/support/nam_fixture.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr uint32_t kGetPairs = 0x02000003;
constexpr uint32_t kSetPairs = 0x02000004;
constexpr size_t kRecordSize = 104;

std::string failed(const char* operation, unsigned number) {
  return fmt::format("qorext_hook_sprint_{}_nam_block_request_info:  ERROR FOUND {} ", operation,
                     number);
}

TEST_F(NamProgramming, ANewProgrammingCodeReplacesTheOldOne) {
  Bytes change = setting(kFactory, "000000", "271828");
  expect_reply(change, echo(change, 0), "isSpcChanged = 1, (000000 ~ 271828)");
  EXPECT_EQ(stored("settings/spc"), "271828");

  Bytes again = setting(kFactory, "000000", "314159");
  EXPECT_THAT(expect_reply(again, echo(again, 5)),
              testing::IsSupersetOf(
                  {std::string("qor_qmi_sprint_write_spc Error = 85"), failed("set", 19)}));
  EXPECT_EQ(stored("settings/spc"), "271828");

  Bytes right = setting(kFactory, "271828", "314159");
  expect_echoed(right, 0);
  EXPECT_EQ(stored("settings/spc"), "314159");
}

TEST_F(NamProgramming, TheSameCodeIsNotWritten) {
  Served served = handset.serve(setting(kFactory, "999999", "999999"));
  EXPECT_THAT(served.log, Contains("isSpcChanged = 0, (999999 ~ 999999)"));
  EXPECT_EQ(written().size(), 15U);
  EXPECT_EQ(stored("settings/spc"), "000000");
}

TEST_F(NamProgramming, ACodeWithALetterIsNotWritten) {
  Bytes request = setting(kFactory, "000000", "12A456");
  expect_reply(request, echo(request, 0), "Byte (2) of SPC is not digit.");
  EXPECT_EQ(written().size(), 15U);
  EXPECT_EQ(stored("settings/spc"), "000000");
}

// The log numbers the items in the order in which they are written and read.
TEST_F(NamProgramming, EveryItemThatCannotBeWrittenIsLoggedWithItsNumber) {
  Bytes request = setting(kProgrammed, "000000", "000000");
  for (unsigned number = 0; number < 15; ++number) {
    SCOPED_TRACE(number);
    handset.inject("element_write", "error error=3", number);
    expect_reply(request, echo(request, 5), failed("set", number));
    EXPECT_EQ(written().size(), 15U);
  }
}

TEST_F(NamProgramming, EveryItemThatCannotBeReadIsLoggedWithItsNumber) {
  for (unsigned number = 0; number < 15; ++number) {
    SCOPED_TRACE(number);
    handset.inject("element_read", "error error=16", number);
    expect_reply(cdma(kNamGet), reply(kNamGet, 5, zeros(kRecordSize)), failed("get", number));
    EXPECT_EQ(handset.modem_requests().size(), 15U);
  }
}

TEST_F(NamProgramming, TheFirstOfTwoFailuresIsLogged) {
  Bytes request = setting(kProgrammed, "000001", "271828");
  handset.inject("element_write", "error error=3", 4);
  expect_reply(request, echo(request, 5), failed("set", 4));
}

TEST_F(NamProgramming, ARecordThatWasNotSentCountsAsZeros) {
  Bytes request = cdma_claiming(kNamSet, 104, {}, "000000");
  EXPECT_EQ(handset.serve(request).replies.substr(0, 24), "020000020000000000000000");
  EXPECT_EQ(written()[0], element_write(8, zeros(17)));
}

class SidNidPairs : public HandsetTest {};

TEST_F(SidNidPairs, AreWrittenAndReadBack) {
  Bytes pairs;
  Bytes item = zeros(1);
  for (uint32_t i = 0; i < 40; ++i) {
    pairs = pairs + le32(0x1000 + i);
    item = item + le16(0x1000 + i);
  }
  expect_echoed(
      cdma(kSetPairs, pairs, "123456"), 0, {},
      {"qorext_hook_sprint_set_nv_spc_protected_data_from_oem: EVENT VALUE 33554436 ",
       "qorext_hook_sprint_set_sid_nid_pairs:  SET SID/NID PAIRS  0 ",
       "NV Write with RDE index 15, record number 0, offset 0.",
       "qor_qmi_sprint_rde_write: hexdump len 81...", "HexDump: Data " + qorextctl::to_hex(item),
       "NV Write success for element 15", "qorext_hook_sprint_set_nam_item: WRITE NV VALUE 0 "},
      {element_write(15, item)});
  expect_reply(cdma(kGetPairs), reply(kGetPairs, 0, pairs));
  EXPECT_THAT(handset.modem_requests(), ElementsAre(element_read(15)));
}

TEST_F(SidNidPairs, AreCutTo16Bits) {
  handset.serve(cdma(kSetPairs, words({0x00012345, 0xFFFF0001})));
  EXPECT_EQ(stored_item(15), "0045230100" + as_hex(zeros(76)));
}

TEST_F(SidNidPairs, ThatCannotBeReadAreZeros) {
  handset.inject("element_read", "error error=16");
  expect_reply(cdma(kGetPairs), reply(kGetPairs, 5, zeros(160)));
}

TEST_F(SidNidPairs, ThatCannotBeWrittenFail) {
  handset.inject("element_write", "error error=3");
  expect_echoed(cdma(kSetPairs, zeros(160)), 5);
}

}  // namespace
}  // namespace e2e
