// SPDX-License-Identifier: Apache-2.0
// Band classes, roaming list and active profile.
#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

constexpr size_t kMaxSegmentBytes = 16384;

Texts get_texts(uint32_t id) {
  return {fmt::format("qorext_hook_sprint_get_nv_data_to_oem: ENTER EVENT VALUE {} ", id),
          fmt::format("qorext_hook_sprint_get_nv_data_to_oem: EVENT VALUE {} ", id),
          "qorext_hook_sprint_get_BC10_status:  ENTER FUNCTION  0 "};
}

Texts set_texts(uint32_t id) {
  return {fmt::format("qorext_hook_sprint_set_nv_data_from_oem: ENTER EVENT VALUE {} ", id)};
}

std::string band_status(int32_t status) {
  return fmt::format("qorext_hook_sprint_get_BC10_BC14_status:  status = {} ", status);
}

Texts set_band_status(int32_t status) {
  return {"qorext_hook_sprint_set_BC10_BC14_status:  ENTER",
          fmt::format("qorext_hook_sprint_set_BC10_BC14_status:  status = {} ", status)};
}

class Bands : public HandsetTest {};

TEST_F(Bands, BandClass10IsRead) {
  handset.modem().command("set carrier.bc10=305419896");
  expect_served(cdma(0x020000B0), reply(0x020000B0, 0, hex("78563412")),
                get_texts(0x020000B0) + Texts{band_status(305419896)},
                {vendor_request("read_band", R"({"selector":0})")});
}

TEST_F(Bands, TheReplyForBandClass14HasTheIdOfBandClass10) {
  handset.modem().command("set carrier.bc14=2");
  expect_served(cdma(0x020000B2), reply(0x020000B0, 0, hex("02000000")),
                get_texts(0x020000B2) + Texts{band_status(2)},
                {vendor_request("read_band", R"({"selector":1})")});
}

TEST_F(Bands, ABandThatTheModemDoesNotReportIsZero) {
  handset.inject("read_band", "error");
  expect_served(
      cdma(0x020000B0), reply(0x020000B0, 0, zeros(4)),
      get_texts(0x020000B0) + Texts{"qor_qmi_sprint_read_band: Read Band failed.", band_status(0)},
      {vendor_request("read_band", R"({"selector":0})")});
}

TEST_F(Bands, BandClassesAreWritten) {
  expect_echoed(cdma(0x020000B1, le32(7), "123456"), 0, {},
                set_texts(0x020000B1) + set_band_status(7),
                {vendor_request("write_band", R"({"band":7,"selector":0})")});
  expect_echoed(cdma(0x020000B3, le32(0xFFFFFFFF)), 0, {},
                set_texts(0x020000B3) + set_band_status(-1),
                {vendor_request("write_band", R"({"band":4294967295,"selector":1})")});
  EXPECT_EQ(stored("carrier/bc10"), "7");
  EXPECT_EQ(stored("carrier/bc14"), "4294967295");
}

TEST_F(Bands, ABandThatTheModemRefusesFails) {
  handset.inject("write_band", "error");
  expect_echoed(cdma(0x020000B1, le32(1)), 5, {},
                set_texts(0x020000B1) + set_band_status(1) +
                    Texts{"qor_qmi_sprint_write_band: Read Band failed."},
                {vendor_request("write_band", R"({"band":1,"selector":0})")});
}

class EmptyRequests : public HandsetTest, public testing::WithParamInterface<uint32_t> {};

TEST_P(EmptyRequests, AreNotSupported) {
  uint32_t id = GetParam();
  Served served = handset.serve(cdma_claiming(id, 0, le32(1)));
  EXPECT_EQ(served.replies, as_hex(reply(id, 6)));
  EXPECT_EQ(served.log.back(), fmt::format("{:#x} not supported", id));
  EXPECT_THAT(handset.modem_requests(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Setters, EmptyRequests,
                         testing::Values(0x02000002, 0x02000004, 0x020000B1, 0x020000B3, 0x020000B4,
                                         0x020000B5));

Texts roaming_list(uint32_t size) {
  return set_texts(0x020000B4) +
         Texts{"qorext_hook_sprint_set_roaming_list_segment:  ENTER  0 ",
               fmt::format("qorext_hook_sprint_set_roaming_list_segment:  p_prl->size ({})", size),
               fmt::format("qor_qmi_sprint_set_roaming_list_segment: data_length ({}).", size)};
}

std::string segment(const Bytes& data) {
  return vendor_request("set_roaming_list_segment",
                        fmt::format(R"({{"segment":"{}"}})", as_hex(data)));
}

TEST_F(Bands, ARoamingListSegmentReachesTheModem) {
  Bytes data = counting(300);
  expect_echoed(cdma(0x020000B4, le32(300) + data), 0, {}, roaming_list(300), {segment(data)});
  EXPECT_EQ(stored("carrier/roaming_list/last_segment"), as_hex(data));
}

TEST_F(Bands, ASegmentThatClaims20000BytesIsCutTo16384) {
  Bytes data = counting(kMaxRequestBytes - 22);
  data.resize(kMaxSegmentBytes);
  expect_echoed(cdma(0x020000B4, le32(20000) + data), 0, {}, roaming_list(20000), {segment(data)});
}

TEST_F(Bands, ASegmentThatClaimsMoreThanWasSentEndsInZeros) {
  expect_echoed(cdma(0x020000B4, le32(8) + hex("A1A2")), 0, {}, roaming_list(8),
                {segment(hex("A1A2") + zeros(6))});
}

TEST_F(Bands, ASegmentThatTheModemRefusesFails) {
  handset.inject("set_roaming_list_segment", "error");
  expect_echoed(cdma(0x020000B4, le32(1) + hex("A1")), 5, {}, roaming_list(1),
                {segment(hex("A1"))});
}

Texts profile(int32_t number) {
  return set_texts(0x020000B5) +
         Texts{"qorext_hook_sprint_set_Active_Profile:  ENTER  0 ",
               fmt::format("qorext_hook_sprint_set_Active_profile:   profile = {} ", number)};
}

TEST_F(Bands, TheActiveProfileGetsTwoReplies) {
  expect_served_twice(cdma(0x020000B5, le32(3)), 0, profile(3),
                      {vendor_request("switch_profile", R"({"profile":3})")});
  EXPECT_EQ(stored("carrier/active_profile"), "3");
}

TEST_F(Bands, AProfileThatTheModemRefusesGetsTwoRepliesToo) {
  handset.inject("switch_profile", "error");
  expect_served_twice(cdma(0x020000B5, le32(3)), 5,
                      profile(3) + Texts{"qor_qmi_sprint_switch_proflie: failed."},
                      {vendor_request("switch_profile", R"({"profile":3})")});
}

TEST_F(Bands, AProfileThatWasNotSentIsZero) {
  Bytes request = cdma_claiming(0x020000B5, 4);
  expect_served_twice(request, 0, profile(0),
                      {vendor_request("switch_profile", R"({"profile":0})")});
}

}  // namespace
}  // namespace e2e
