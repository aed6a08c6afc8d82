// SPDX-License-Identifier: Apache-2.0
// Announcements of services that come up and go away, over every transport.
#include <gmock/gmock.h>

#include "tests/unit/platform/transport_support.h"

namespace transport_test {
namespace {

class NameService : public Transport {
 protected:
  // The next announcement; fails the test when there is none.
  static Announcement next(qmi_transport::ServiceWatch& names) {
    auto announcement = next_announcement(names);
    EXPECT_TRUE(announcement);
    return announcement.value_or(Announcement{});
  }
};

TEST_P(NameService, ListsTheServicesThatArePresent) {
  ScriptedModem modem(endpoint());
  modem.publish(kService, kInstance);
  modem.publish(kService, kSecond);
  auto servers = present();
  ASSERT_EQ(servers.size(), 2u);
  EXPECT_EQ(servers[0].service, kService);
  EXPECT_NE(servers[0].port, servers[1].port);
  std::vector<uint32_t> instances = {servers[0].instance, servers[1].instance};
  EXPECT_THAT(instances, testing::UnorderedElementsAre(kInstance, kSecond));
}

TEST_P(NameService, ReportsTheEndOfAnEmptyList) {
  ScriptedModem modem(endpoint());
  EXPECT_EQ(next(*watch()).kind, Announcement::Kind::end_of_list);
}

TEST_P(NameService, AnnouncesServicesThatComeUpAndGoAway) {
  ScriptedModem modem(endpoint());
  auto names = watch();
  next(*names);
  modem.publish(kService, kInstance);
  Announcement appeared = next(*names);
  EXPECT_EQ(appeared.kind, Announcement::Kind::appeared);
  EXPECT_EQ(appeared.server.instance, kInstance);
  modem.withdraw(kService);
  Announcement gone = next(*names);
  EXPECT_EQ(gone.kind, Announcement::Kind::gone);
  EXPECT_EQ(gone.server, appeared.server);
}

TEST_P(NameService, KeepsServicesAndVersionsApart) {
  ScriptedModem modem(endpoint());
  auto names = watch();
  next(*names);
  modem.publish(kOtherService, kInstance);
  modem.publish(kService, 2);
  modem.publish(kService, kSecond);
  Announcement appeared = next(*names);
  EXPECT_EQ(appeared.server.service, kService);
  EXPECT_EQ(appeared.server.instance, kSecond);
  EXPECT_EQ(present(kService, 2).size(), 1u);
  EXPECT_EQ(present(kService, 3).size(), 0u);
  EXPECT_EQ(present(kOtherService).size(), 1u);
}

TEST_P(NameService, PublishesAnInstanceOnlyOnce) {
  ScriptedModem modem(endpoint());
  modem.publish(kService, kInstance);
  modem.run([](Server& server) { EXPECT_FALSE(server.publish(kService, kInstance)); });
  EXPECT_EQ(present().size(), 1u);
}

TEST_P(NameService, WithdrawsOneInstanceWithItsClients) {
  ScriptedModem modem(endpoint(), echo);
  modem.publish(kService, kInstance);
  auto first = open();
  modem.publish(kService, kSecond);
  auto servers = present();
  ASSERT_EQ(servers.size(), 2u);
  auto& second_server = servers[0].instance == kSecond ? servers[0] : servers[1];
  auto second = qmi_transport::open_channel(endpoint(), second_server);
  auto names = watch();
  while (next(*names).kind != Announcement::Kind::end_of_list) {
  }

  modem.run([](Server& server) { server.withdraw_instance(kService, kSecond); });
  Announcement gone = next(*names);
  EXPECT_EQ(gone.kind, Announcement::Kind::gone);
  EXPECT_EQ(gone.server, second_server);
  EXPECT_EQ(receive(*second).first, Status::gone);
  expect_echo(*first, {1});
  ASSERT_EQ(present().size(), 1u);
  EXPECT_EQ(present()[0].instance, kInstance);
}

TEST_P(NameService, HasNoServicesAfterTheEndOfTheServer) {
  auto modem = std::make_unique<ScriptedModem>(endpoint());
  modem->publish(kService, kInstance);
  auto names = watch();
  next(*names);
  next(*names);
  modem.reset();
  auto last = next_announcement(*names);
  EXPECT_TRUE(!last || last->kind == Announcement::Kind::gone);
  EXPECT_TRUE(present().empty());
}

INSTANTIATE_TEST_SUITE_P(Over, NameService, every_transport(), kind_name);

}  // namespace
}  // namespace transport_test
