// SPDX-License-Identifier: Apache-2.0
// NV items, by number and through requests for one item.
#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

using testing::ElementsAre;

constexpr uint32_t kItem = 7000;

class Nv : public HandsetTest {
 protected:
  void store(uint32_t rde_id, const Bytes& data) {
    handset.modem().command(fmt::format("nv {} {}", rde_id, as_hex(data)));
  }
  void remove(uint32_t rde_id) {
    handset.modem().command(fmt::format(R"(set nv=[{{"rde_id":{},"absent":true}}])", rde_id));
  }
};

TEST_F(Nv, AnItemIsWrittenAndReadBack) {
  Bytes data = hex("11223344 556677");
  expect_served(nv_write(kItem, data, 2, 3), reply(kNvWrite, 0),
                {"qorext_hook_sprint_rde_write: FUNCTION enter.",
                 "NV Write with RDE index 7000, record number 2, offset 3.",
                 "qor_qmi_sprint_rde_write: hexdump len 7...", "HexDump: Data 11223344556677",
                 "NV Write success for element 7000", "RDE Write success for element 7000"},
                {element_write(kItem, data, 2, 3)});
  expect_served(nv_read(kItem, 2, 0, 10),
                reply(kNvRead, 0, words({kItem, 2, 0, 10}) + zeros(3) + data + zeros(4)),
                {"qorext_hook_sprint_rde_read: Function Enter.",
                 "NV Read with RDE index (7000), recordNum(2), offset(0).",
                 "NV Read 7000, length 10, data length 10, grde - 00000011223344556677"},
                {element_read(kItem, 2)});
}

TEST_F(Nv, AReadStartsAtItsOffset) {
  store(kItem, hex("A0A1A2A3A4"));
  expect_reply(nv_read(kItem, 0, 2),
               reply(kNvRead, 0, words({kItem, 0, 2, 3}) + hex("A2A3A4") + zeros(4)));
}

TEST_F(Nv, AMissingItemCannotBeRead) {
  expect_served(nv_read(kItem), reply(kNvRead, 5),
                {"qorext_hook_sprint_rde_read: Function Enter.",
                 "NV Read with RDE index (7000), recordNum(0), offset(0).",
                 "NV Read fail - 0, result - 1, error - 16", "RDE Read error"},
                {element_read(kItem)});
}

TEST_F(Nv, AnItemOf512BytesIsWrittenAndReadBack) {
  Bytes data = counting(512);
  expect_reply(nv_write(kItem, data), reply(kNvWrite, 0));
  EXPECT_EQ(stored_item(kItem), as_hex(data));
  expect_reply(nv_read(kItem), nv_item(kItem, data));
}

TEST_F(Nv, AWriteOfMoreThan512BytesIsRefusedWithoutTheModem) {
  for (uint32_t length : {513U, 0x80000000U, 0xFFFFFFFFU}) {
    Texts log = expect_reply(cdma(kNvWrite, words({kItem, 0, 0, length}) + counting(513)),
                             reply(kNvWrite, 5));
    EXPECT_EQ(log[6], fmt::format("Data more than buffer size {}", static_cast<int32_t>(length)));
  }
  EXPECT_THAT(handset.modem_requests(), testing::IsEmpty());
}

TEST_F(Nv, AWriteHasZerosForBytesThatWereNotSent) {
  expect_reply(cdma(kNvWrite, words({kItem, 0, 0, 4}) + hex("AB")), reply(kNvWrite, 0));
  EXPECT_EQ(stored_item(kItem), "ab000000");
}

TEST_F(Nv, AWriteThatTheModemRefusesFails) {
  handset.inject("element_write", "error error=52");
  expect_served(nv_write(kItem, hex("AB")), reply(kNvWrite, 5),
                {"qorext_hook_sprint_rde_write: FUNCTION enter.",
                 "NV Write with RDE index 7000, record number 0, offset 0.",
                 "qor_qmi_sprint_rde_write: hexdump len 1...", "HexDump: Data AB",
                 "NV Write fail - 0, result - 1, error - 52", "RDE write error"},
                {element_write(kItem, hex("AB"))});
}

// A request id and the NV item that it reads or writes. Code field and status of the request have
// no effect.
using FixedItem = std::tuple<uint32_t, uint32_t>;

class FixedItems : public Nv, public testing::WithParamInterface<FixedItem> {};

TEST_P(FixedItems, AreWrittenWithTheRequestsWholePayload) {
  auto [id, rde_id] = GetParam();
  expect_effects(cdma(id, hex("0B0C0D0E0F"), "987654"), reply(id, 0),
                 declined(id) + Texts{fmt::format("NV write RdeId: {} length 5", rde_id)},
                 {element_write(rde_id, hex("0B0C0D0E0F"))});
}

TEST_P(FixedItems, RefuseMoreThan512BytesWithoutTheModem) {
  auto [id, rde_id] = GetParam();
  expect_reply(cdma(id, counting(512)), reply(id, 0));
  expect_reply(cdma(id, counting(513)), reply(id, 5));
  EXPECT_THAT(handset.modem_requests(), ElementsAre(element_write(rde_id, counting(512))));
}

TEST_P(FixedItems, FailWhenTheModemRefuses) {
  auto [id, rde_id] = GetParam();
  handset.inject("element_write", "error error=3");
  Texts log = expect_reply(cdma(id, hex("01")), reply(id, 5));
  EXPECT_EQ(log.back(), fmt::format("NV write Err RdeId={}, Err=0, resp_type=3", rde_id));
}

INSTANTIATE_TEST_SUITE_P(Ids, FixedItems,
                         testing::Values(FixedItem{0x02000008, 28}, FixedItem{0x02000018, 38},
                                         FixedItem{0x0200001A, 39}, FixedItem{0x0200000E, 10003},
                                         FixedItem{0x02000010, 37}));

class ReadableItems : public Nv, public testing::WithParamInterface<FixedItem> {};

TEST_P(ReadableItems, ReturnTheirFirstFourBytes) {
  auto [id, rde_id] = GetParam();
  store(rde_id, hex("A1A2A3A4A5A6"));
  std::string frame = fmt::format(
      "{:02X}000002"
      "04000000"
      "00000000"
      "000000000000"
      "A1A2A3A40000",
      id & 0xFF);
  expect_effects(
      cdma(id), reply(id, 0, hex("A1A2A3A4")),
      declined(id) +
          Texts{fmt::format("NV Read RdeId {}", rde_id),
                fmt::format("handleNvResponse for id {:x}, dataSize-4, respSize-6", id),
                fmt::format("handleNvRsp: data is 161 for msgId {:#x}", id),
                fmt::format("handleNvRsp: response hexdump for p_respHdr->msgId {:#x}...", id),
                "HexDump: Data " + frame},
      {element_read(rde_id)});
}

TEST_P(ReadableItems, ArePaddedWithZeros) {
  auto [id, rde_id] = GetParam();
  store(rde_id, hex("7E"));
  expect_reply(cdma(id), reply(id, 0, hex("7E000000")));
}

// The daemon does not check the modem's result.
TEST_P(ReadableItems, AreZerosWhenTheModemHasNone) {
  auto [id, rde_id] = GetParam();
  remove(rde_id);
  expect_reply(cdma(id), reply(id, 0, zeros(4)));
}

INSTANTIATE_TEST_SUITE_P(Ids, ReadableItems,
                         testing::Values(FixedItem{0x0200000D, 10003}, FixedItem{0x0200000F, 37}));

class UnreadableItems : public Nv, public testing::WithParamInterface<FixedItem> {};

TEST_P(UnreadableItems, AreReadFromTheModemButNotReturned) {
  auto [id, rde_id] = GetParam();
  store(rde_id, hex("A1A2A3A4"));
  EXPECT_EQ(expect_reply(cdma(id), reply(id, 5, zeros(4)))[8], "This should not happen");
  EXPECT_THAT(handset.modem_requests(), ElementsAre(element_read(rde_id)));
}

INSTANTIATE_TEST_SUITE_P(Ids, UnreadableItems,
                         testing::Values(FixedItem{0x02000017, 38}, FixedItem{0x02000019, 39}));

TEST_F(Nv, TheProtocolRevisionIsItem28) {
  handset.serve(cdma(0x02000008, hex("0B")));
  handset.modem_requests();
  expect_served(cdma(0x02000007), reply(0x02000007, 0, hex("0B000000")),
                {"qorext_hook_sprint_get_nv_data_to_oem: ENTER EVENT VALUE 33554439 ",
                 "qorext_hook_sprint_get_nv_data_to_oem: EVENT VALUE 33554439 ",
                 "Enter qorext_hook_sprint_get_mob_p_pre() ",
                 "NV Read with RDE index (28), recordNum(0), offset(0).",
                 "NV Read 28, length 1, data length 1, grde - 0B",
                 "qorext_hook_sprint_get_nam_item: READ NV VALUE 0 ", "get mob_cai_rev 11 "},
                {element_read(28)});
}

TEST_F(Nv, AMissingProtocolRevisionFailsWithData) {
  remove(28);
  expect_reply(cdma(0x02000007), reply(0x02000007, 5, zeros(4)));
}

}  // namespace
}  // namespace e2e
