// SPDX-License-Identifier: Apache-2.0
// Requests, their responses and transaction ids.
#include <set>

#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

struct Timer {
  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
  std::chrono::milliseconds elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start);
  }
};

class Exchange : public OpenClient {};

TEST_P(Exchange, ReturnsTheResponse) { EXPECT_EQ(read_band(client_, 42), success(42)); }

TEST_P(Exchange, SendsTheRequestAsItIsDescribed) {
  read_band(client_, 0x01020304);
  const Bytes expected = {0, 1, 0, 1, 1, 7, 0, 1, 4, 0, 4, 3, 2, 1};
  EXPECT_EQ(modem_.requests().at(0).packet, expected);
}

TEST_P(Exchange, CarriesTheLongestRequest) {
  modem_.answer_with(answer_with_tlvs(kRoamingList, {0x01, 4, 0, 5, 0, 0, 0}));
  uint32_t status = 0;
  EXPECT_EQ(send_longest(client_, status), QMI_NO_ERR);
  EXPECT_EQ(status, 5u);
  EXPECT_EQ(modem_.requests().at(0).packet.size(), 7u + 3 + 2 + 16384);
}

TEST_P(Exchange, NeedsNoRequestStructureForAMessageWithoutOne) {
  modem_.answer_with(answer_with_tlvs(0x107, {0x01, 9, 0, 1, 0, 0, 0, 0, 0, 0, 0, 3}));
  uint8_t response[12] = {};
  EXPECT_EQ(qmi_client_send_msg_sync(client_, 0x107, nullptr, 0, response, 12, kLong), QMI_NO_ERR);
  EXPECT_EQ(response[8], 3);
}

TEST_P(Exchange, DeliversAFailureResultAsAResponse) {
  modem_.answer_with(answer_with_tlvs(kUtils, {0x01, 4, 0, 1, 0, 0, 0, 0x03, 2, 0, 0, 0}));
  uint8_t request[264] = {};
  uint8_t response[520] = {};
  EXPECT_EQ(qmi_client_send_msg_sync(client_, kUtils, request, 264, response, 520, kLong),
            QMI_NO_ERR);
  EXPECT_EQ(response[0], 1);
}

TEST_P(Exchange, MatchesResponsesThatComeInAnotherOrder) {
  modem_.answer_with(
      [held = std::vector<Request>()](Server& server, const Request& request) mutable {
        held.push_back(request);
        if (held.size() < 4) return;
        for (auto each = held.rbegin(); each != held.rend(); ++each) answer(server, *each);
      });
  run_senders(1, 4,
              [&](uint32_t number) { EXPECT_EQ(read_band(client_, number), success(number)); });
}

TEST_P(Exchange, EndsAtItsTimeout) {
  modem_.answer_with(stay_silent);
  Timer timer;
  EXPECT_EQ(code_of(client_, 200), QMI_TIMEOUT_ERR);
  EXPECT_GE(timer.elapsed(), 200ms);
  EXPECT_LT(timer.elapsed(), 5s);
}

TEST_P(Exchange, EndsAtItsTimeoutWhileIndicationsArrive) {
  modem_.answer_with([](Server& server, const Request& request) {
    for (uint32_t i = 0; i < 2000; ++i) server.send(request.peer, utils_indication(i));
  });
  Timer timer;
  EXPECT_EQ(code_of(client_, 100), QMI_TIMEOUT_ERR);
  EXPECT_LT(timer.elapsed(), 5s);
}

TEST_P(Exchange, EndsAtItsTimeoutWhenTheModemDoesNotReadRequests) {
  modem_.hold([&] {
    run_senders(0, 20, [&](uint32_t) {
      uint32_t status = 0;
      EXPECT_EQ(send_longest(client_, status, 200), QMI_TIMEOUT_ERR);
    });
  });
}

TEST_P(Exchange, IgnoresALateResponse) {
  modem_.answer_with(
      [held = std::vector<Request>()](Server& server, const Request& request) mutable {
        held.push_back(request);
        if (held.size() == 1) return;
        for (const auto& each : held) answer(server, each);
      });
  EXPECT_EQ(code_of(client_, 50), QMI_TIMEOUT_ERR);
  EXPECT_EQ(read_band(client_, 2), success(2));
}

TEST_P(Exchange, IgnoresASecondResponse) {
  modem_.answer_with([](Server& server, const Request& request) {
    answer(server, request);
    Request other = request;
    codec_test::put(other.packet, 10, 99, 4);
    answer(server, other);
  });
  for (uint32_t number = 1; number < 20; ++number) {
    EXPECT_EQ(read_band(client_, number), success(number));
  }
}

TEST_P(Exchange, ServesSeveralSendersAtOnce) {
  constexpr uint32_t kSenders = 8;
  constexpr uint32_t kExchanges = 500;
  std::atomic<uint32_t> right = 0;
  run_senders(0, kSenders, [&](uint32_t sender) {
    for (uint32_t i = 0; i < kExchanges; ++i) {
      uint32_t number = sender * kExchanges + i;
      right += read_band(client_, number) == success(number);
    }
  });
  EXPECT_EQ(right, kSenders * kExchanges);
}

TEST_P(Exchange, PassesTheReadingRoleOnAtATimeout) {
  modem_.answer_with([](Server& server, const Request& request) {
    if (number_of(request) >= 5) answer(server, request);
  });
  run_senders(1, 8, [&](uint32_t number) {
    if (number < 5) {
      EXPECT_EQ(read_band(client_, number, 50 * number).code, QMI_TIMEOUT_ERR);
      return;
    }
    for (int i = 0; i < 100; ++i) EXPECT_EQ(read_band(client_, number), success(number));
  });
}

INSTANTIATE_TEST_SUITE_P(Of, Exchange, every_setup(), setup_name);

class Transactions : public Client {
 protected:
  static constexpr uint32_t kHeld = 0xFFFFFFFF;  // the number of the request that stays in use
};

TEST_P(Transactions, AreNeitherZeroNorInUseWhenTheyWrapAround) {
  constexpr uint32_t kExchanges = 70000;
  std::optional<Request> held;
  std::set<uint16_t> ids;
  modem_.answer_with([&](Server& server, const Request& request) {
    ids.insert(transaction_of(request));
    if (number_of(request) != kHeld) return answer(server, request);
    held = request;
  });
  open();
  std::thread waiting([this] { EXPECT_EQ(read_band(client_, kHeld, 100000), success(kHeld)); });
  EXPECT_TRUE(eventually([&] { return modem_.request_count() == 1; }));
  uint16_t in_use = transaction_of(modem_.requests().at(0));
  for (uint32_t i = 0; i < kExchanges; ++i) ASSERT_EQ(read_band(client_, i), success(i));
  modem_.run([&](Server& server) { answer(server, *held); });
  waiting.join();
  EXPECT_EQ(ids.size(), 65535u);
  EXPECT_FALSE(ids.contains(0));
  auto requests = modem_.requests();
  EXPECT_EQ(std::count_if(requests.begin(), requests.end(),
                          [in_use](const auto& each) { return transaction_of(each) == in_use; }),
            1);
}

INSTANTIATE_TEST_SUITE_P(Of, Transactions,
                         testing::Values(Setup{TransportKind::unix_socket, false}), setup_name);

}  // namespace
}  // namespace client_test
