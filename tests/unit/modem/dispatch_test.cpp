// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/modem/modem_test.h"

namespace {

class Dispatch : public ModemTest {
 protected:
  Bytes raw_request(uint16_t message_id, const Bytes& tlvs) {
    return modem::make_packet(qmi_idl::WireType::request, kTransaction, message_id, tlvs);
  }
};

// Response, transaction 0x1234, the message, seven bytes: TLV 2 of four bytes, result 1, the error.
modem::Bytes refused(uint8_t message_id, uint8_t error) {
  return {2, 0x34, 0x12, message_id, 0, 7, 0, 2, 4, 0, 1, 0, error, 0};
}

TEST_F(Dispatch, UnknownMessageIsNotSupported) {
  EXPECT_EQ(exchange(modem::dms_service(), raw_request(0x25, {})), refused(0x25, 94));
}

TEST_F(Dispatch, RequestThatDoesNotDecodeIsMalformed) {
  EXPECT_EQ(exchange(modem::qorext_service(), raw_request(0x08, {})), refused(0x08, 1));
  EXPECT_EQ(exchange(modem::qorext_service(), raw_request(0x0F, {1, 0xFF, 0xFF, 0})),
            refused(0x0F, 1));
}

TEST_F(Dispatch, EveryDescribedRequestIsServed) {
  for (const qmi_idl::Service* service : modem::services()) {
    for (const qmi_idl::Message& message : service->messages) {
      if (message.direction != qmi_idl::Direction::request) continue;
      Bytes answer = exchange(*service, request_packet(*service, message.name));
      EXPECT_NE(answer, refused(static_cast<uint8_t>(message.id), 94)) << message.name;
      EXPECT_FALSE(fields_of(*service, answer).is_null()) << message.name;
      actions(kMuchLater);
    }
  }
}

TEST_F(Dispatch, ResponseCarriesTheTransactionAndTheMessage) {
  Bytes answer =
      exchange(modem::qorext_service(), request_packet(modem::qorext_service(), "get_bsr_timer"));
  auto header = qmi_idl::load_header(answer);
  ASSERT_TRUE(header.has_value());
  EXPECT_EQ(header->type, qmi_idl::WireType::response);
  EXPECT_EQ(header->transaction, kTransaction);
  EXPECT_EQ(header->message_id, 0x108);
}

TEST_F(Dispatch, AnythingButARequestIsDropped) {
  Bytes response = modem::result_packet(kTransaction, 0x08, 0, 0);
  simulator.receive(modem::qorext_service(), kPeer, response);
  simulator.receive(modem::qorext_service(), kPeer, Bytes{0, 1, 2});
  simulator.receive(modem::qorext_service(), kPeer, Bytes{});
  EXPECT_TRUE(actions(kMuchLater).empty());
  EXPECT_TRUE(simulator.requests.all().empty());
}

}  // namespace
