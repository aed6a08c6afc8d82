// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/recording/conversation.h"

#include <gtest/gtest.h>

#include "tests/unit/qorextctl/qmi_samples.h"
#include "tools/qorextctl/frames/personal.h"

namespace qorextctl {
namespace {

class ReadMessage : public testing::Test {
 protected:
  QmiMessage read(const std::string& service, const Bytes& packet, uint64_t client = 1) {
    auto message = reader_.read(service, client, packet);
    EXPECT_TRUE(message);
    return message ? *message : QmiMessage{};
  }
  QmiMessage masked(const std::string& service, const Bytes& packet, uint64_t client = 1) {
    QmiMessage message = read(service, packet, client);
    mask(message);
    return message;
  }

  MessageReader reader_;
};

TEST_F(ReadMessage, HasNamesAndFields) {
  QmiMessage message = read("qorext", read_response(7, kMobPRev, {6}));
  EXPECT_EQ(title_of(message), "qorext element_read response");
  EXPECT_EQ(message.header.transaction, 7);
  EXPECT_EQ(message.fields["rde_id"], kMobPRev);
  EXPECT_EQ(message.fields["data"], "06");
  EXPECT_EQ(hex_of(message), to_hex(read_response(7, kMobPRev, {6})));
}

TEST_F(ReadMessage, HasItsIdAsNameWithoutADescription) {
  QmiMessage message = read("nas", qmi(kQmiRequest, 1, 0x1234, {}));
  EXPECT_EQ(title_of(message), "nas 0x1234 request");
  EXPECT_TRUE(message.fields.is_null());
}

TEST_F(ReadMessage, NeedsAWholeHeaderAndAKnownService) {
  EXPECT_FALSE(reader_.read("qorext", 1, Bytes{0, 1, 0}));
  EXPECT_FALSE(reader_.read("qorext", 1, Bytes{0, 1, 0, 8, 0, 9, 0, 1}));
  EXPECT_FALSE(reader_.read("wds", 1, read_request(1, 1)));
}

TEST_F(ReadMessage, ShowsOtherItemsWhenMasked) {
  QmiMessage message = masked("qorext", read_response(7, kMobPRev, {6}));
  EXPECT_EQ(message.fields["data"], "06");
  EXPECT_EQ(hex_of(message), to_hex(read_response(7, kMobPRev, {6})));
}

TEST_F(ReadMessage, MasksPersonalItemsAndTheirBytes) {
  Bytes packet = read_response(7, kMin1, {0x12, 0x34, 0x56});
  QmiMessage message = masked("qorext", packet);
  EXPECT_EQ(message.fields["data"], "***");
  EXPECT_EQ(message.fields["rde_id"], kMin1);
  std::string hex = hex_of(message);
  EXPECT_EQ(hex.size(), 2 * packet.size());
  EXPECT_EQ(hex.substr(0, 14), to_hex(part(packet, 0, 7)));
  EXPECT_EQ(hex.find_first_not_of('*', 14), std::string::npos);
}

TEST_F(ReadMessage, MasksCodes) {
  QmiMessage message = masked("dms", write_spc_request(1, "246810", "135791"));
  EXPECT_EQ(message.fields["current_spc"], "***");
  EXPECT_EQ(message.fields["new_spc"], "***");
  EXPECT_EQ(hex_of(message).find("323436383130"), std::string::npos);
}

TEST_F(ReadMessage, MasksTheDataOfUtilityRequestsAndResponses) {
  constexpr uint16_t kUtils = 0x000F;
  Bytes request;
  append_tlv(request, 1, {9, 0, 0, 0});
  append_tlv(request, 2, {2, 0, 0x32, 0x37});
  Bytes response;
  append_tlv(response, 1, {0, 0, 0, 0});
  append_tlv(response, 3, {2, 0, 0x32, 0x37});
  for (const Bytes& packet :
       {qmi(kQmiRequest, 3, kUtils, request), qmi(kQmiResponse, 3, kUtils, response)}) {
    QmiMessage message = masked("qorext", packet);
    EXPECT_EQ(message.fields["data"], "***");
    EXPECT_EQ(hex_of(message), to_hex(part(packet, 0, 7)) + masked_hex(packet.size() - 7));
  }
  EXPECT_FALSE(read("qorext", qmi(kQmiIndication, 3, kUtils, {})).is_personal);
}

TEST_F(ReadMessage, MasksAResponseThatNamesAnotherItemThanItsRequest) {
  read("qorext", read_request(9, kMin1));
  EXPECT_EQ(masked("qorext", read_response(9, kMobPRev, {0x12})).fields["data"], "***");
  EXPECT_EQ(masked("qorext", read_response(9, kMobPRev, {0x12}), 2).fields["data"], "12");
}

TEST_F(ReadMessage, ShowsAResponseWhenItsTransactionIsUsedAgain) {
  read("qorext", read_request(9, kMin1));
  read("qorext", read_request(9, kMobPRev));
  EXPECT_EQ(masked("qorext", read_response(9, kMobPRev, {6})).fields["data"], "06");
}

TEST_F(ReadMessage, MasksAMessageThatDoesNotMatchItsDescription) {
  Bytes packet = qmi(kQmiResponse, 1, 0x08, {0x03, 0xFF, 0xFF, 0x12, 0x34});
  EXPECT_EQ(hex_of(masked("qorext", packet)).substr(14), "**********");
}

TEST_F(ReadMessage, IsABlockSaveResultUnlessTheStateIsReady) {
  QmiMessage ready = read("qorext", hob_request(1, 0xFF));
  QmiMessage saved = read("qorext", hob_request(2, 1));
  EXPECT_FALSE(is_block_save_result(ready.name, ready.fields));
  EXPECT_TRUE(is_block_save_result(saved.name, saved.fields));
  EXPECT_FALSE(is_block_save_result("element_read", saved.fields));
}

}  // namespace
}  // namespace qorextctl
