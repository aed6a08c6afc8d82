// SPDX-License-Identifier: Apache-2.0
// Transaction ids.
#include <set>

#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

using qmi_transport::Server;

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
  std::thread waiting([this] {
    Band band{};
    EXPECT_EQ(read_band(client_, kHeld, band, 100000), QMI_NO_ERR);
    EXPECT_EQ(band.band, kHeld);
  });
  EXPECT_TRUE(eventually([&] { return modem_.request_count() == 1; }));
  uint16_t in_use = transaction_of(modem_.requests().at(0));
  for (uint32_t i = 0; i < kExchanges; ++i) {
    Band band{};
    ASSERT_EQ(read_band(client_, i, band), QMI_NO_ERR);
    ASSERT_EQ(band.band, i);
  }
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
