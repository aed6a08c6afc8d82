// SPDX-License-Identifier: Apache-2.0
// Requests and their responses.
#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

using qmi_idl::WireType;
using qmi_transport::Server;

struct Timer {
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  std::chrono::milliseconds elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start);
  }
};

class Exchange : public Client {
 protected:
  Exchange() { open(); }
};

TEST_P(Exchange, BringsTheResponse) {
  Band band{};
  EXPECT_EQ(read_band(client_, 42, band), QMI_NO_ERR);
  EXPECT_EQ(band.band, 42u);
}

TEST_P(Exchange, SendsTheRequestAsItIsDescribed) {
  Band band{};
  read_band(client_, 0x01020304, band);
  const Bytes request = modem_.requests().at(0).packet;
  const Bytes expected = {0, 1, 0, 1, 1, 7, 0, 1, 4, 0, 4, 3, 2, 1};
  EXPECT_EQ(request, expected);
}

TEST_P(Exchange, CarriesTheLongestRequest) {
  modem_.answer_with([](Server& server, const Request& request) {
    server.send(request.peer, packet_of(WireType::response, transaction_of(request), 0x100,
                                        {0x01, 4, 0, 5, 0, 0, 0}));
  });
  Bytes segment(16388, 0x77);
  codec_test::put(segment, 0, 16384, 4);
  uint32_t status = 0;
  EXPECT_EQ(qmi_client_send_msg_sync(client_, 0x100, segment.data(), 16388, &status, 4, kLong),
            QMI_NO_ERR);
  EXPECT_EQ(status, 5u);
  EXPECT_EQ(modem_.requests().at(0).packet.size(), 7u + 3 + 2 + 16384);
}

TEST_P(Exchange, NeedsNoRequestStructureWhereTheMessageHasNone) {
  modem_.answer_with([](Server& server, const Request& request) {
    server.send(request.peer, packet_of(WireType::response, transaction_of(request), 0x107,
                                        {0x01, 9, 0, 1, 0, 0, 0, 0, 0, 0, 0, 3}));
  });
  uint8_t response[12] = {};
  EXPECT_EQ(qmi_client_send_msg_sync(client_, 0x107, nullptr, 0, response, 12, kLong), QMI_NO_ERR);
  EXPECT_EQ(response[8], 3);
}

TEST_P(Exchange, DeliversAFailureResultAsAnAnswer) {
  modem_.answer_with([](Server& server, const Request& request) {
    server.send(request.peer, packet_of(WireType::response, transaction_of(request), kUtils,
                                        {0x01, 4, 0, 1, 0, 0, 0, 0x03, 2, 0, 0, 0}));
  });
  uint8_t request[264] = {};
  uint8_t response[520] = {};
  EXPECT_EQ(qmi_client_send_msg_sync(client_, kUtils, request, 264, response, 520, kLong),
            QMI_NO_ERR);
  EXPECT_EQ(response[0], 1);
}

TEST_P(Exchange, MatchesAnswersThatComeInAnotherOrder) {
  modem_.answer_with(
      [held = std::vector<Request>()](Server& server, const Request& request) mutable {
        held.push_back(request);
        if (held.size() < 4) return;
        for (auto each = held.rbegin(); each != held.rend(); ++each) answer(server, *each);
      });
  std::vector<std::thread> senders;
  for (uint32_t number = 1; number <= 4; ++number) {
    senders.emplace_back([this, number] {
      Band band{};
      EXPECT_EQ(read_band(client_, number, band), QMI_NO_ERR);
      EXPECT_EQ(band.band, number);
    });
  }
  for (auto& sender : senders) sender.join();
}

TEST_P(Exchange, EndsWhenItsTimeIsUp) {
  modem_.answer_with(stay_silent);
  Timer timer;
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band, 200), QMI_TIMEOUT_ERR);
  EXPECT_GE(timer.elapsed(), 200ms);
  EXPECT_LT(timer.elapsed(), 5s);
}

TEST_P(Exchange, EndsInTimeWhileIndicationsComeInAllTheTime) {
  modem_.answer_with([](Server& server, const Request& request) {
    for (uint32_t i = 0; i < 2000; ++i) server.send(request.peer, utils_indication(i));
  });
  Timer timer;
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band, 100), QMI_TIMEOUT_ERR);
  EXPECT_LT(timer.elapsed(), 5s);
}

TEST_P(Exchange, EndsInTimeWhenTheModemDoesNotReadRequests) {
  modem_.hold([&] {
    std::vector<std::thread> senders;
    for (int i = 0; i < 20; ++i) {
      senders.emplace_back([this] {
        Bytes segment(16388);
        codec_test::put(segment, 0, 16384, 4);
        uint32_t status = 0;
        EXPECT_EQ(qmi_client_send_msg_sync(client_, 0x100, segment.data(), 16388, &status, 4, 200),
                  QMI_TIMEOUT_ERR);
      });
    }
    for (auto& sender : senders) sender.join();
  });
}

TEST_P(Exchange, TakesNoLateAnswerForItsOwn) {
  modem_.answer_with(
      [held = std::vector<Request>()](Server& server, const Request& request) mutable {
        held.push_back(request);
        if (held.size() == 1) return;
        for (const auto& each : held) answer(server, each);
      });
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band, 50), QMI_TIMEOUT_ERR);
  EXPECT_EQ(read_band(client_, 2, band), QMI_NO_ERR);
  EXPECT_EQ(band.band, 2u);
}

TEST_P(Exchange, TakesNoSecondAnswer) {
  modem_.answer_with([](Server& server, const Request& request) {
    answer(server, request);
    Request other = request;
    codec_test::put(other.packet, 10, 99, 4);
    answer(server, other);
  });
  for (uint32_t number = 1; number < 20; ++number) {
    Band band{};
    EXPECT_EQ(read_band(client_, number, band), QMI_NO_ERR);
    EXPECT_EQ(band.band, number);
  }
}

// Answers one request with each of these, then properly; the first that counts is taken.
TEST_P(Exchange, ServesSeveralSendersAtOnce) {
  constexpr uint32_t kSenders = 8;
  constexpr uint32_t kExchanges = 500;
  std::vector<std::thread> senders;
  std::atomic<uint32_t> right = 0;
  for (uint32_t sender = 0; sender < kSenders; ++sender) {
    senders.emplace_back([this, sender, &right] {
      for (uint32_t i = 0; i < kExchanges; ++i) {
        Band band{};
        uint32_t number = sender * kExchanges + i;
        right += read_band(client_, number, band) == QMI_NO_ERR && band.band == number;
      }
    });
  }
  for (auto& sender : senders) sender.join();
  EXPECT_EQ(right, kSenders * kExchanges);
}

TEST_P(Exchange, HandsTheReadingOverWhenASenderGivesUp) {
  modem_.answer_with([](Server& server, const Request& request) {
    if (number_of(request) >= 100) answer(server, request);
  });
  std::vector<std::thread> senders;
  for (uint32_t number = 1; number <= 4; ++number) {
    senders.emplace_back([this, number] {
      Band band{};
      EXPECT_EQ(read_band(client_, number, band, 50 * number), QMI_TIMEOUT_ERR);
    });
  }
  for (uint32_t number = 100; number < 104; ++number) {
    senders.emplace_back([this, number] {
      for (int i = 0; i < 100; ++i) {
        Band band{};
        EXPECT_EQ(read_band(client_, number, band), QMI_NO_ERR);
        EXPECT_EQ(band.band, number);
      }
    });
  }
  for (auto& sender : senders) sender.join();
}

INSTANTIATE_TEST_SUITE_P(Of, Exchange, every_setup(), setup_name);

}  // namespace
}  // namespace client_test
