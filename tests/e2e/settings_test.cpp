// SPDX-License-Identifier: Apache-2.0
// Settings of the modem: factory reset, DDTM, BSR timer, LTE option.
#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

class Settings : public HandsetTest {};

Texts reset_texts(uint32_t length, uint32_t flag) {
  return {fmt::format("factory_reset: EVENT VALUE 33554614, msg_len ({}), reset_flag ({}) ", length,
                      flag)};
}

TEST_F(Settings, AFactoryResetForwardsItsFlag) {
  handset.modem().command("set carrier.bsr_timer=9");
  expect_echoed(cdma(0x020000B6, hex("02")), 0, {},
                reset_texts(1, 2) + Texts{"Received factory reset result - 1"},
                {vendor_request("factory_reset", R"({"mode":2})")});
  EXPECT_EQ(stored("carrier/bsr_timer"), "300");
}

TEST_F(Settings, AFactoryResetWithAnotherLengthHasTheFlag255) {
  expect_echoed(cdma(0x020000B6, hex("0203")), 0, {},
                reset_texts(2, 255) + Texts{"Received factory reset result - 1"},
                {vendor_request("factory_reset", R"({"mode":255})")});
}

TEST_F(Settings, AFactoryResetThatTheModemRefusesFails) {
  handset.inject("factory_reset", "error");
  expect_echoed(
      cdma(0x020000B6), 5, {},
      reset_texts(0, 255) +
          Texts{"qor_qmi_sprint_fatory_reset: qmi_client_send_msg_sync failed (0), result (0).",
                "Received factory reset result - 0"},
      {vendor_request("factory_reset", R"({"mode":255})")});
}

class Ddtm : public Settings, public testing::WithParamInterface<uint32_t> {};

TEST_P(Ddtm, IsWrittenAndReadBack) {
  uint32_t get = GetParam();
  expect_echoed(cdma(get + 1, hex("5A")), 0, {},
                {"qorext_hook_sprint_set_ddtm_preference:  ENTER  0 ",
                 "qorext_hook_sprint_set_ddtm_preference:   ddtm = 90 ",
                 "NV Write with RDE index 10018, record number 0, offset 0.",
                 "qor_qmi_sprint_rde_write: hexdump len 1...", "HexDump: Data 5A",
                 "NV Write success for element 10018"},
                {element_write(10018, hex("5A"))});
  expect_echoed(cdma(get, {}, "123456"), 0, hex("5A000000"),
                {"qorext_hook_sprint_get_ddtm_preference:  ENTER  0 ",
                 "NV Read with RDE index (10018), recordNum(0), offset(0).",
                 "NV Read 10018, length 1, data length 1, grde - 5A",
                 "qorext_hook_sprint_get_ddtm_preference:   ddtm = 90 "},
                {element_read(10018)});
}

TEST_P(Ddtm, FailsWhenTheModemRefuses) {
  uint32_t get = GetParam();
  handset.inject("element_read", "error error=16");
  handset.inject("element_write", "error error=3");
  expect_echoed(cdma(get), 5, {},
                {"qorext_hook_sprint_get_ddtm_preference:  ENTER  0 ",
                 "NV Read with RDE index (10018), recordNum(0), offset(0).",
                 "NV Read fail - 0, result - 1, error - 16",
                 "qorext_hook_sprint_set_ddtm_preference: Fail to write."},
                {element_read(10018)});
  expect_echoed(cdma(get + 1, hex("01")), 5, {},
                {"qorext_hook_sprint_set_ddtm_preference:  ENTER  0 ",
                 "qorext_hook_sprint_set_ddtm_preference:   ddtm = 1 ",
                 "NV Write with RDE index 10018, record number 0, offset 0.",
                 "qor_qmi_sprint_rde_write: hexdump len 1...", "HexDump: Data 01",
                 "NV Write fail - 0, result - 1, error - 3",
                 "qorext_hook_sprint_set_ddtm_preference: Fail to write."},
                {element_write(10018, hex("01"))});
}

INSTANTIATE_TEST_SUITE_P(BothIds, Ddtm, testing::Values(0x020000B7, 0x020000B9));

TEST_F(Settings, TheBsrTimerIsSetAndReadBack) {
  expect_echoed(cdma(0x020000BD, le32(1800)), 0, {},
                {"handle_set_bsr_timer: EVENT VALUE 33554621 ", "Set BSR timer result - 1"},
                {vendor_request("set_bsr_timer", R"({"timer":1800})")});
  expect_echoed(cdma(0x020000BC, {}, "abcdef"), 0, le32(1800),
                {"handle_set_bsr_timer: EVENT VALUE 33554620 ", "Get BSR timer result - 1800"},
                {vendor_request("get_bsr_timer")});
}

TEST_F(Settings, AfterARefusalSettingABsrTimerFailsAndReadingItReturnsZero) {
  handset.inject("set_bsr_timer", "error error=48");
  handset.inject("get_bsr_timer", "error error=49");
  expect_echoed(
      cdma(0x020000BD, le32(1)), 5, {},
      {"handle_set_bsr_timer: EVENT VALUE 33554621 ",
       "qor_qmi_sprint_set_bsr_timer: Set BSR timer failed (48).", "Set BSR timer result - 0"},
      {vendor_request("set_bsr_timer", R"({"timer":1})")});
  expect_echoed(
      cdma(0x020000BC), 0, zeros(4),
      {"handle_set_bsr_timer: EVENT VALUE 33554620 ",
       "qor_qmi_sprint_get_bsr_timer: Get BSR timer failed (49).", "Get BSR timer result - 0"},
      {vendor_request("get_bsr_timer")});
}

TEST_F(Settings, TheLteOptionIsWrittenAndReadBack) {
  Bytes data = hex("0102030405");
  expect_echoed(cdma(0x020000BF, data), 0, {},
                {"handle_get_lte_option: EVENT VALUE 33554623 ",
                 "NV Write with RDE index 10017, record number 0, offset 0.",
                 "qor_qmi_sprint_rde_write: hexdump len 5...", "HexDump: Data 0102030405",
                 "NV Write success for element 10017"},
                {element_write(10017, data)});
  expect_echoed(cdma(0x020000BE), 0, data,
                {"handle_get_lte_option: EVENT VALUE 33554622 ",
                 "NV Read with RDE index (10017), recordNum(0), offset(0).",
                 "NV Read 10017, length 5, data length 5, grde - 0102030405"},
                {element_read(10017)});
}

TEST_F(Settings, AnLteOptionThatClaimsMoreThanWasSentEndsInZeros) {
  expect_echoed(cdma_claiming(0x020000BF, 6, hex("A1A2A3")), 0);
  EXPECT_EQ(stored_item(10017), "a1a2a3000000");
}

TEST_F(Settings, AnLteOptionOfMoreThan512BytesIsRefusedWithoutTheModem) {
  expect_echoed(cdma(0x020000BF, counting(513)), 5, {},
                {"handle_get_lte_option: EVENT VALUE 33554623 ",
                 "NV Write with RDE index 10017, record number 0, offset 0.",
                 "Data more than buffer size 513"},
                {});
}

TEST_F(Settings, AMissingLteOptionFailsWithoutData) {
  handset.modem().command(R"(set nv=[{"rde_id":10017,"absent":true}])");
  expect_echoed(cdma(0x020000BE), 5);
}

}  // namespace
}  // namespace e2e
