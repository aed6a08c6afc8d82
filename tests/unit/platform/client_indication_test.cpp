// SPDX-License-Identifier: Apache-2.0
// Indications and their callback.
#include <future>

#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

using qmi_idl::WireType;
using qmi_transport::Peer;
using qmi_transport::Server;

class Indications : public testing::TestWithParam<TransportKind> {
 protected:
  Indications() : place_(GetParam()), modem_(place_.endpoint(), answer) {
    modem_.publish(qorext().id, vendor_instance());
  }

  // Opens a client that the modem knows.
  qmi_client_type open(qmi_client_ind_cb callback, void* data) {
    qmi_client_type client = open_client(callback, data);
    Band band{};
    EXPECT_EQ(read_band(client, 1, band), QMI_NO_ERR);
    return client;
  }

  void indicate(const Bytes& packet) {
    modem_.run([&packet](Server& server) {
      for (Peer peer : server.peers(qorext().id)) server.send(peer, packet);
    });
  }

  ModemPlace place_;
  ScriptedModem modem_;
};

struct Raw {
  qmi_client_type client;
  unsigned message_id;
  Bytes content;
  const void* buffer;
};
using RawPromise = std::promise<Raw>;

void keep_raw(qmi_client_type client, unsigned int message_id, void* buffer, unsigned int length,
              void* promise) {
  auto* bytes = static_cast<uint8_t*>(buffer);
  static_cast<RawPromise*>(promise)->set_value(
      {client, message_id, Bytes(bytes, bytes + length), buffer});
}

TEST_P(Indications, AreHandedOverWithoutTheirHeader) {
  RawPromise promise;
  qmi_client_type client = open(keep_raw, &promise);
  Bytes packet = utils_indication(7);
  indicate(packet);
  Raw raw = promise.get_future().get();
  EXPECT_EQ(raw.client, client);
  EXPECT_EQ(raw.message_id, kUtils);
  EXPECT_EQ(raw.content, Bytes(packet.begin() + 7, packet.end()));
  qmi_client_release(client);
}

TEST_P(Indications, WithoutContentHaveALengthOfZeroAndABuffer) {
  RawPromise promise;
  qmi_client_type client = open(keep_raw, &promise);
  indicate(packet_of(WireType::indication, 0, 0x13, {}));
  Raw raw = promise.get_future().get();
  EXPECT_EQ(raw.message_id, 0x13u);
  EXPECT_TRUE(raw.content.empty());
  EXPECT_NE(raw.buffer, nullptr);
  qmi_client_release(client);
}

TEST_P(Indications, OfUnknownMessagesAreHandedOverToo) {
  RawPromise promise;
  qmi_client_type client = open(keep_raw, &promise);
  indicate(packet_of(WireType::indication, 0, 0x7FFF, {1, 1, 0, 9}));
  EXPECT_EQ(promise.get_future().get().message_id, 0x7FFFu);
  qmi_client_release(client);
}

TEST_P(Indications, AreDroppedByAClientWithoutCallback) {
  qmi_client_type client = open(nullptr, nullptr);
  for (uint32_t i = 0; i < 5; ++i) indicate(utils_indication(i));
  Band band{};
  EXPECT_EQ(read_band(client, 3, band), QMI_NO_ERR);
  EXPECT_EQ(band.band, 3u);
  qmi_client_release(client);
}

// A callback that waits until the test lets it go on.
struct Gate {
  Seen seen;
  std::promise<void> entered;
  std::promise<void> open;
  std::shared_future<void> opened = open.get_future().share();

  static void callback(qmi_client_type client, unsigned int message_id, void* buffer,
                       unsigned int length, void* data) {
    auto& self = *static_cast<Gate*>(data);
    if (self.seen.count() == 0) self.entered.set_value();
    self.opened.wait();
    Seen::callback(client, message_id, buffer, length, &self.seen);
  }
};

TEST_P(Indications, AllArriveInOrderAtASlowCallbackWhileResponsesAreServed) {
  constexpr uint32_t kIndications = 5000;
  Gate gate;
  qmi_client_type client = open(Gate::callback, &gate);
  modem_.run([](Server& server) {
    Peer peer = server.peers(qorext().id).at(0);
    for (uint32_t i = 0; i < kIndications; ++i) server.send(peer, utils_indication(i));
  });
  gate.entered.get_future().wait();
  Band band{};
  EXPECT_EQ(read_band(client, 5, band), QMI_NO_ERR);
  EXPECT_EQ(gate.seen.count(), 0u);
  gate.open.set_value();

  EXPECT_TRUE(eventually([&] { return gate.seen.count() == kIndications; }));
  for (uint32_t i = 0; i < kIndications; ++i) ASSERT_EQ(gate.seen.numbers[i], i);
  qmi_client_release(client);
}

TEST_P(Indications, AllArriveInOrderThatComeBeforeAndBehindResponses) {
  constexpr uint32_t kRequests = 500;
  Seen seen;
  qmi_client_type client = open(Seen::callback, &seen);
  modem_.answer_with([](Server& server, const Request& request) {
    server.send(request.peer, utils_indication(2 * number_of(request)));
    answer(server, request);
    server.send(request.peer, utils_indication(2 * number_of(request) + 1));
  });
  for (uint32_t i = 0; i < kRequests; ++i) {
    Band band{};
    ASSERT_EQ(read_band(client, i, band), QMI_NO_ERR);
    ASSERT_EQ(band.band, i);
  }
  EXPECT_TRUE(eventually([&] { return seen.count() == 2 * kRequests; }));
  for (uint32_t i = 0; i < seen.count(); ++i) ASSERT_EQ(seen.numbers[i], i);
  qmi_client_release(client);
}

TEST_P(Indications, ThatWaitWhenTheServiceGoesAwayAreStillDelivered) {
  Gate gate;
  qmi_client_type client = open(Gate::callback, &gate);
  modem_.run([](Server& server) {
    Peer peer = server.peers(qorext().id).at(0);
    for (uint32_t i = 0; i < 5; ++i) server.send(peer, utils_indication(i));
  });
  gate.entered.get_future().wait();
  Band band{};
  EXPECT_EQ(read_band(client, 5, band), QMI_NO_ERR);
  modem_.withdraw(qorext().id);
  gate.open.set_value();
  EXPECT_TRUE(eventually([&] { return gate.seen.count() == 5; }));
  qmi_client_release(client);
}

TEST_P(Indications, EndWithTheReleaseThatWaitsForTheCallback) {
  Gate gate;
  qmi_client_type client = open(Gate::callback, &gate);
  for (uint32_t i = 0; i < 3; ++i) indicate(utils_indication(i));
  gate.entered.get_future().wait();

  std::atomic<bool> released = false;
  std::thread releaser([&] {
    EXPECT_EQ(qmi_client_release(client), QMI_NO_ERR);
    released = true;
  });
  Band band{};
  EXPECT_TRUE(eventually([&] { return read_band(client, 1, band) == QMI_SERVICE_ERR; }));
  EXPECT_FALSE(released);
  gate.open.set_value();
  releaser.join();
  EXPECT_EQ(gate.seen.count(), 1u);
}

struct SelfRelease {
  std::atomic<int> calls = 0;
  std::promise<int> result;

  static void callback(qmi_client_type client, unsigned int, void*, unsigned int, void* data) {
    auto& self = *static_cast<SelfRelease*>(data);
    ++self.calls;
    self.result.set_value(qmi_client_release(client));
  }
};

TEST_P(Indications, MayEndWithAReleaseFromTheCallbackItself) {
  size_t threads = own("task");
  size_t descriptors = own("fd");
  SelfRelease release;
  qmi_client_type client = open(SelfRelease::callback, &release);
  modem_.run([](Server& server) {
    Peer peer = server.peers(qorext().id).at(0);
    for (uint32_t i = 0; i < 5; ++i) server.send(peer, utils_indication(i));
  });
  EXPECT_EQ(release.result.get_future().get(), QMI_NO_ERR);
  EXPECT_EQ(qmi_client_release(client), QMI_INVALID_PARAM_ERR);
  EXPECT_TRUE(eventually([&] { return own("task") == threads && own("fd") == descriptors; }));
  EXPECT_EQ(release.calls, 1);
}

struct SenderInCallback {
  std::promise<std::pair<int, uint32_t>> result;

  static void callback(qmi_client_type client, unsigned int, void*, unsigned int, void* data) {
    Band band{};
    int code = read_band(client, 77, band);
    static_cast<SenderInCallback*>(data)->result.set_value({code, band.band});
  }
};

TEST_P(Indications, LeaveTheirCallbackFreeToSend) {
  SenderInCallback sender;
  qmi_client_type client = open(SenderInCallback::callback, &sender);
  indicate(utils_indication(1));
  EXPECT_EQ(sender.result.get_future().get(), std::make_pair(int{QMI_NO_ERR}, 77u));
  qmi_client_release(client);
}

TEST_P(Indications, AreDecodedOnlyIntoTheirOwnStructure) {
  qmi_client_type client = open(nullptr, nullptr);
  Bytes packet = utils_indication(7);
  uint8_t structure[520];
  auto decode = [&](qmi_idl_type_of_message_type type, unsigned id, unsigned length,
                    unsigned room) {
    return qmi_client_message_decode(client, type, id, packet.data() + 7, length, structure, room);
  };
  EXPECT_EQ(decode(QMI_IDL_INDICATION, kUtils, 13, 520), QMI_NO_ERR);
  EXPECT_EQ(structure[0], 7);
  EXPECT_EQ(structure[8], 0xAB);
  EXPECT_EQ(decode(QMI_IDL_INDICATION, kUtils, 12, 520), QMI_MALFORMED_ERR);
  EXPECT_EQ(decode(QMI_IDL_INDICATION, kUtils, 0, 520), QMI_MALFORMED_ERR);
  EXPECT_EQ(decode(QMI_IDL_INDICATION, kUtils, 13, 519), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(decode(QMI_IDL_INDICATION, 0x7FFF, 13, 520), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(decode(QMI_IDL_REQUEST, 0x12, 13, 520), QMI_INVALID_PARAM_ERR);
  EXPECT_EQ(decode(static_cast<qmi_idl_type_of_message_type>(3), kUtils, 13, 520),
            QMI_INVALID_PARAM_ERR);
  qmi_client_release(client);
}

INSTANTIATE_TEST_SUITE_P(Over, Indications, every_transport(), kind_name);

}  // namespace
}  // namespace client_test
