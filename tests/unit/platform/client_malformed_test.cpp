// SPDX-License-Identifier: Apache-2.0
// Packets and requests that do not match their description, and packets that are too long.
#include <gmock/gmock.h>

#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

using testing::ElementsAre;

class Malformed : public OpenClient {
 protected:
  // The result of a request that is answered with this packet first and then correctly.
  int result_of(const std::function<Bytes(const Request&)>& first) {
    modem_.answer_with([&](Server& server, const Request& request) {
      server.send(request.peer, first(request));
      answer(server, request);
    });
    return code_of(client_);
  }
};

TEST_P(Malformed, IsAResponseWithATlvThatIsTooShort) {
  EXPECT_EQ(result_of([](const Request& request) {
              return response_to(request, kReadBand, {0x01, 7, 0, 0, 0, 0, 0, 1, 0, 0});
            }),
            QMI_MALFORMED_ERR);
}

TEST_P(Malformed, IsAResponseWithoutTheMandatoryTlv) {
  EXPECT_EQ(result_of([](const Request& request) { return response_to(request, kReadBand, {}); }),
            QMI_MALFORMED_ERR);
}

TEST_P(Malformed, IsATruncatedResponse) {
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

TEST_P(Malformed, IsTheResponseOfAnotherMessage) {
  EXPECT_EQ(result_of([](const Request& request) {
              Bytes packet = band_answer(request);
              packet[3] = 0x03;
              return packet;
            }),
            QMI_MALFORMED_ERR);
}

TEST_P(Malformed, PacketsThatAreNotResponsesAreSkipped) {
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
  const struct {
    uint32_t id;
    void* request;
    unsigned size;
    void* response;
    unsigned room;
  } kCases[] = {
      {kReadBand, &number, 3, &band, 8}, {kReadBand, &number, 4, &band, 7},
      {kReadBand, nullptr, 4, &band, 8}, {kReadBand, &number, 4, nullptr, 8},
      {kReadBand, nullptr, 0, &band, 8}, {0x107, &number, 4, &band, 8},
      {0x7FFF, &number, 4, &band, 8},    {0x10C, &number, 4, &band, 8},
  };
  for (const auto& [id, request, size, response, room] : kCases) {
    EXPECT_EQ(qmi_client_send_msg_sync(client_, id, request, size, response, room, kLong),
              QMI_INVALID_PARAM_ERR);
  }
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

// Longer than any QMI message. QRTR sockets refuse to send such a packet.
class LongPacket : public OpenClient {
 protected:
  static Bytes too_long(Bytes start) {
    start.resize(qmi_transport::kMaxPacketSize + 1);
    return start;
  }

  const std::string line_ = "qmi_cci: Dropped a packet of more than 65542 bytes";
};

TEST_P(LongPacket, IsDroppedAndTheClientStaysUsable) {
  modem_.answer_with([](Server& server, const Request& request) {
    server.send(request.peer, too_long(utils_indication(1)));
    server.send(request.peer, utils_indication(2));
    answer(server, request);
  });
  for (uint32_t number = 1; number <= 5; ++number) {
    EXPECT_EQ(read_band(client_, number), success(number));
    EXPECT_THAT(take_log_lines(), ElementsAre(line_));
  }
  if (!GetParam().has_callback) return;
  EXPECT_TRUE(eventually([&] { return seen_.count() == 5; }));
  EXPECT_THAT(seen_.numbers, testing::Each(2u));
}

TEST_P(LongPacket, IsDroppedWhileNoRequestIsUnderWay) {
  EXPECT_EQ(code_of(client_), QMI_NO_ERR);
  modem_.run([](Server& server) {
    server.send(server.peers(qorext().id).at(0), too_long(utils_indication(1)));
  });
  EXPECT_EQ(code_of(client_), QMI_NO_ERR);
  EXPECT_THAT(take_log_lines(), ElementsAre(line_));
}

TEST_P(LongPacket, FailsTheRequestThatItAnswersAtOnce) {
  modem_.answer_with([](Server& server, const Request& request) {
    Bytes packet = band_answer(request);
    codec_test::put(packet, 5, 0xFFFF, 2);  // correct for the part that fits into the buffer
    server.send(request.peer, number_of(request) == 1 ? too_long(packet) : band_answer(request));
  });
  EXPECT_EQ(read_band(client_, 1).code, QMI_MALFORMED_ERR);
  EXPECT_THAT(take_log_lines(), ElementsAre(line_));
  EXPECT_EQ(read_band(client_, 2), success(2));
}

INSTANTIATE_TEST_SUITE_P(Of, LongPacket,
                         testing::Values(Setup{TransportKind::unix_socket, false},
                                         Setup{TransportKind::unix_socket, true}),
                         setup_name);

}  // namespace
}  // namespace client_test
