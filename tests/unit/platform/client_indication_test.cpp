// SPDX-License-Identifier: Apache-2.0
// Indications and their callback.
#include <future>

#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

class Indications : public ModemAndClient, public testing::TestWithParam<TransportKind> {
 protected:
  Indications() : ModemAndClient(GetParam()) {}

  // Opens a client that the modem knows.
  void open(qmi_client_ind_cb callback, void* data) {
    ModemAndClient::open(callback, data);
    EXPECT_EQ(code_of(client_), QMI_NO_ERR);
  }

  void indicate(const Bytes& packet) {
    modem_.run([&](Server& server) { server.send(server.peers(qorext().id).at(0), packet); });
  }
  // Sends indications with the numbers from 0.
  void indicate_numbers(uint32_t count) {
    modem_.run([count](Server& server) {
      Peer peer = server.peers(qorext().id).at(0);
      for (uint32_t i = 0; i < count; ++i) server.send(peer, utils_indication(i));
    });
  }

  static void expect_in_order(Seen& seen, uint32_t count) {
    EXPECT_TRUE(eventually([&] { return seen.count() == count; }));
    for (uint32_t i = 0; i < count; ++i) ASSERT_EQ(seen.numbers[i], i);
  }
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

class RawIndications : public Indications {
 protected:
  // What the callback gets for the packet.
  Raw pass(const Bytes& packet) {
    RawPromise promise;
    open(keep_raw, &promise);
    indicate(packet);
    Raw raw = promise.get_future().get();
    EXPECT_EQ(raw.client, client_);
    release();
    return raw;
  }
};

TEST_P(RawIndications, ArePassedToTheCallbackWithoutTheirHeader) {
  Bytes packet = utils_indication(7);
  Raw raw = pass(packet);
  EXPECT_EQ(raw.message_id, kUtils);
  EXPECT_EQ(raw.content, Bytes(packet.begin() + 7, packet.end()));
}

TEST_P(RawIndications, WithoutContentHaveLengthZeroAndABuffer) {
  Raw raw = pass(packet_of(WireType::indication, 0, 0x13, {}));
  EXPECT_EQ(raw.message_id, 0x13u);
  EXPECT_TRUE(raw.content.empty());
  EXPECT_NE(raw.buffer, nullptr);
}

TEST_P(RawIndications, OfUnknownMessagesArePassedToTheCallbackToo) {
  EXPECT_EQ(pass(packet_of(WireType::indication, 0, 0x7FFF, {1, 1, 0, 9})).message_id, 0x7FFFu);
}

TEST_P(Indications, AreDroppedByAClientWithoutACallback) {
  open(nullptr, nullptr);
  indicate_numbers(5);
  EXPECT_EQ(read_band(client_, 3), success(3));
}

TEST_P(Indications, ArriveInOrderAtASlowCallbackWhileRequestsAreServed) {
  constexpr uint32_t kIndications = 5000;
  open(Turnstile::callback, &turnstile_);
  indicate_numbers(kIndications);
  turnstile_.wait_for_entry();
  EXPECT_EQ(code_of(client_), QMI_NO_ERR);
  EXPECT_EQ(turnstile_.seen.count(), 0u);
  turnstile_.open();
  expect_in_order(turnstile_.seen, kIndications);
}

TEST_P(Indications, ArriveInOrderBeforeAndAfterResponses) {
  constexpr uint32_t kRequests = 500;
  open(Seen::callback, &seen_);
  modem_.answer_with([](Server& server, const Request& request) {
    server.send(request.peer, utils_indication(2 * number_of(request)));
    answer(server, request);
    server.send(request.peer, utils_indication(2 * number_of(request) + 1));
  });
  for (uint32_t i = 0; i < kRequests; ++i) ASSERT_EQ(read_band(client_, i), success(i));
  expect_in_order(seen_, 2 * kRequests);
}

TEST_P(Indications, ThatAreQueuedWhenTheServiceGoesAwayAreStillDelivered) {
  open(Turnstile::callback, &turnstile_);
  indicate_numbers(5);
  turnstile_.wait_for_entry();
  EXPECT_EQ(code_of(client_), QMI_NO_ERR);
  withdraw();
  turnstile_.open();
  EXPECT_TRUE(eventually([&] { return turnstile_.seen.count() == 5; }));
}

TEST_P(Indications, EndWithTheReleaseWhichWaitsForTheCallback) {
  open(Turnstile::callback, &turnstile_);
  indicate_numbers(3);
  turnstile_.wait_for_entry();

  std::atomic<bool> released = false;
  std::thread releaser([&] {
    EXPECT_EQ(qmi_client_release(client_), QMI_NO_ERR);
    released = true;
  });
  EXPECT_TRUE(eventually([&] { return code_of(client_) == QMI_SERVICE_ERR; }));
  EXPECT_FALSE(released);
  turnstile_.open();
  releaser.join();
  client_ = nullptr;
  EXPECT_EQ(turnstile_.seen.count(), 1u);
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

TEST_P(Indications, CanBeEndedByAReleaseInTheCallback) {
  Resources before = own_resources();
  SelfRelease self;
  open(SelfRelease::callback, &self);
  indicate_numbers(5);
  EXPECT_EQ(self.result.get_future().get(), QMI_NO_ERR);
  EXPECT_EQ(release(), QMI_INVALID_PARAM_ERR);
  EXPECT_TRUE(eventually([&] { return own_resources() == before; }));
  EXPECT_EQ(self.calls, 1);
}

struct SenderInCallback {
  std::promise<Outcome> result;

  static void callback(qmi_client_type client, unsigned int, void*, unsigned int, void* data) {
    static_cast<SenderInCallback*>(data)->result.set_value(read_band(client, 77));
  }
};

TEST_P(Indications, CanSendRequestsInTheCallback) {
  SenderInCallback sender;
  open(SenderInCallback::callback, &sender);
  indicate(utils_indication(1));
  EXPECT_EQ(sender.result.get_future().get(), success(77));
  release();  // before the sender is destroyed
}

TEST_P(Indications, AreDecodedIntoTheirOwnStructureOnly) {
  open(nullptr, nullptr);
  Bytes packet = utils_indication(7);
  uint8_t structure[520];
  auto decode = [&](qmi_idl_type_of_message_type type, unsigned id, unsigned length,
                    unsigned room) {
    return qmi_client_message_decode(client_, type, id, packet.data() + 7, length, structure, room);
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
}

INSTANTIATE_TEST_SUITE_P(Over, Indications, every_transport(), kind_name);
INSTANTIATE_TEST_SUITE_P(Over, RawIndications, every_transport(), kind_name);

}  // namespace
}  // namespace client_test
