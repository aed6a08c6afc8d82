// SPDX-License-Identifier: Apache-2.0
// Packets that are longer than any QMI message.
#include <gmock/gmock.h>

#include "tests/unit/platform/client_support.h"
#include "tests/unit/platform/log_lines.h"

namespace client_test {
namespace {

using qmi_transport::Server;
using testing::ElementsAre;

// QRTR's local sockets refuse to send one.
class LongPacket : public testing::TestWithParam<bool> {
 protected:
  LongPacket() {
    modem_.publish(qorext().id, vendor_instance());
    take_log_lines();
    client_ = GetParam() ? open_client(Seen::callback, &seen_) : open_client();
  }
  ~LongPacket() override { qmi_client_release(client_); }

  static Bytes too_long(Bytes start) {
    start.resize(qmi_transport::kMaxPacketSize + 1);
    return start;
  }

  const std::string line_ = "qmi_cci: Dropped a packet of more than 65542 bytes";
  ModemPlace place_{TransportKind::unix_socket};
  ScriptedModem modem_{place_.endpoint(), answer};
  Seen seen_;
  qmi_client_type client_ = nullptr;
};

TEST_P(LongPacket, IsDroppedAndTheClientGoesOn) {
  modem_.answer_with([](Server& server, const Request& request) {
    server.send(request.peer, too_long(utils_indication(1)));
    server.send(request.peer, utils_indication(2));
    answer(server, request);
  });
  for (uint32_t number = 1; number <= 5; ++number) {
    Band band{};
    EXPECT_EQ(read_band(client_, number, band), QMI_NO_ERR);
    EXPECT_EQ(band.band, number);
    EXPECT_THAT(take_log_lines(), ElementsAre(line_));
  }
  if (!GetParam()) return;
  EXPECT_TRUE(eventually([&] { return seen_.count() == 5; }));
  EXPECT_THAT(seen_.numbers, testing::Each(2u));
}

TEST_P(LongPacket, ThatComesWhileNobodyAsksIsDroppedToo) {
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band), QMI_NO_ERR);
  modem_.run([](Server& server) {
    server.send(server.peers(qorext().id).at(0), too_long(utils_indication(1)));
  });
  EXPECT_EQ(read_band(client_, 2, band), QMI_NO_ERR);
  EXPECT_THAT(take_log_lines(), ElementsAre(line_));
}

TEST_P(LongPacket, ThatAnswersARequestFailsItAtOnce) {
  modem_.answer_with([](Server& server, const Request& request) {
    Bytes packet = band_answer(request);
    codec_test::put(packet, 5, 0xFFFF, 2);  // right for what fits into the buffer
    server.send(request.peer, number_of(request) == 1 ? too_long(packet) : band_answer(request));
  });
  Band band{};
  EXPECT_EQ(read_band(client_, 1, band), QMI_MALFORMED_ERR);
  EXPECT_THAT(take_log_lines(), ElementsAre(line_));
  EXPECT_EQ(read_band(client_, 2, band), QMI_NO_ERR);
}

INSTANTIATE_TEST_SUITE_P(With, LongPacket, testing::Bool(), [](const auto& callback) {
  return callback.param ? "callback" : "no_callback";
});

}  // namespace
}  // namespace client_test
