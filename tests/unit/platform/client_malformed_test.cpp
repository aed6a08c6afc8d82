// SPDX-License-Identifier: Apache-2.0
// Answers and requests that do not match their description.
#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

using qmi_idl::WireType;
using qmi_transport::Server;

class Malformed : public Client {
 protected:
  Malformed() { open(); }

  // Answers one request like this first, then properly; the first that counts is taken.
  int result_of(std::function<Bytes(const Request&)> wrong) {
    modem_.answer_with([&](Server& server, const Request& request) {
      server.send(request.peer, wrong(request));
      answer(server, request);
    });
    Band band{};
    return read_band(client_, 1, band);
  }
};

TEST_P(Malformed, IsAnAnswerWithATlvThatIsTooShort) {
  EXPECT_EQ(result_of([](const Request& request) {
              return packet_of(WireType::response, transaction_of(request), kReadBand,
                               {0x01, 7, 0, 0, 0, 0, 0, 1, 0, 0});
            }),
            QMI_MALFORMED_ERR);
}

TEST_P(Malformed, IsAnAnswerWithoutTheMandatoryTlv) {
  EXPECT_EQ(result_of([](const Request& request) {
              return packet_of(WireType::response, transaction_of(request), kReadBand, {});
            }),
            QMI_MALFORMED_ERR);
}

TEST_P(Malformed, IsAnAnswerThatIsCut) {
  for (size_t size = 3; size < 18; ++size) {
    EXPECT_EQ(result_of([size](const Request& request) {
                Bytes packet = band_answer(request);
                packet.resize(size);
                return packet;
              }),
              QMI_MALFORMED_ERR)
        << size;
  }
}

TEST_P(Malformed, IsTheAnswerOfAnotherMessage) {
  EXPECT_EQ(result_of([](const Request& request) {
              Bytes packet = band_answer(request);
              packet[3] = 0x03;
              return packet;
            }),
            QMI_MALFORMED_ERR);
}

TEST_P(Malformed, PacketsThatAnswerNothingArePassedOver) {
  const std::vector<Bytes> strays = {{0x55},
                                     {2, 1},
                                     Bytes(100, 0xFF),
                                     packet_of(WireType::response, 0x7777, kReadBand, {}),
                                     packet_of(WireType::request, 1, kReadBand, {})};
  for (const Bytes& stray : strays) {
    EXPECT_EQ(result_of([&stray](const Request&) { return stray; }), QMI_NO_ERR)
        << testing::PrintToString(stray);
  }
}

TEST_P(Malformed, RequestsOfAWrongSizeAreNotSent) {
  uint32_t number = 1;
  Band band{};
  auto send = [&](uint32_t id, void* request, unsigned size, void* response, unsigned room) {
    return qmi_client_send_msg_sync(client_, id, request, size, response, room, kLong);
  };
  EXPECT_EQ(send(kReadBand, &number, 3, &band, 8), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(send(kReadBand, &number, 4, &band, 7), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(send(kReadBand, nullptr, 4, &band, 8), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(send(kReadBand, &number, 4, nullptr, 8), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(send(kReadBand, nullptr, 0, &band, 8), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(send(0x107, &number, 4, &band, 8), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(send(0x7FFF, &number, 4, &band, 8), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(send(0x10C, &number, 4, &band, 8), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(modem_.request_count(), 0u);
}

TEST_P(Malformed, RequestsWithACountAboveItsCapacityAreNotSent) {
  Bytes request(264);
  Bytes response(520);
  codec_test::put(request, 4, 257, 4);
  EXPECT_EQ(
      qmi_client_send_msg_sync(client_, kUtils, request.data(), 264, response.data(), 520, kLong),
      QMI_MALFORMED_ERR);
  EXPECT_EQ(modem_.request_count(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Of, Malformed, every_setup(), setup_name);

}  // namespace
}  // namespace client_test
