// SPDX-License-Identifier: Apache-2.0
#include "src/host/host.h"

#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace dispatch_test {

class Dispatch : public ServingPhone {
 protected:
  void cdma(uint32_t id, const Bytes& payload = {}) { ask_cdma(Request::cdma(id, payload)); }

  // The RDE id of the message that a request of this id sends.
  uint32_t rde_id_of(uint32_t id, unsigned int message) {
    cdma(id, Bytes(4));
    EXPECT_EQ(exchanges.size(), 1u) << std::hex << id;
    if (exchanges.size() != 1) return 0;
    EXPECT_EQ(exchanges[0].id, message) << std::hex << id;
    return load_le32(exchanges[0].request.data());
  }

  // The same for a request of the carrier's: the fallback serves it when there is no memory for the
  // carrier's reply.
  uint32_t fallback_rde_id_of(uint32_t id, unsigned int message, const Bytes& payload = Bytes(4)) {
    allocations_left = 0;
    cdma(id, payload);
    allocations_left = -1;
    EXPECT_EQ(exchanges.size(), 2u) << std::hex << id;
    if (exchanges.size() != 2) return 0;
    EXPECT_EQ(exchanges[1].id, message) << std::hex << id;
    return load_le32(exchanges[1].request.data());
  }
};

TEST_F(Dispatch, UnknownGenericIdGetsTheErrorReply) {
  ask(Request::generic(0x50506));
  EXPECT_THAT(trace, ElementsAre("log: 0x60505 not supported", "reply: 01050506FFFFFFFF"));
}

TEST_F(Dispatch, UnknownCdmaIdGetsStatusSix) {
  cdma(0x02000099);
  EXPECT_THAT(trace, ElementsAre("log: qorext_hook_sprint_handler: ENTER ",
                                 "log: qorext_hook_sprint_handler: Unexpected MSG ID: 33554585",
                                 "log: 0x2000099 not supported by Sprint handler.",
                                 "log: 0x2000099 not supported", "reply: " + reply(0x02000099, 6)));
}

TEST_F(Dispatch, IdWithoutMemoryForItsReplyGetsStatusSix) {
  allocations_left = 0;
  cdma(0x02000011);
  EXPECT_THAT(replies(), ElementsAre(reply(0x02000011, 6)));
  ASSERT_GE(trace.size(), 3u);
  EXPECT_EQ(trace[trace.size() - 3], "log: 0x2000011 not supported by Sprint handler.");
  EXPECT_EQ(trace[trace.size() - 2], "log: 0x2000011 not supported");
}

TEST_F(Dispatch, IdThatTheCarrierServesNeverReachesTheFallback) {
  cdma(0x02000016, Bytes(16));
  EXPECT_EQ(exchanges.size(), 1u);
  EXPECT_EQ(replies().size(), 1u);
  EXPECT_EQ(trace.back(), "log: 0x2000016 is handled by Sprint handler.");
}

TEST_F(Dispatch, NeighbourOfAReadIdIsNotItsWriteId) {
  cdma(0x0200000B);
  EXPECT_THAT(replies(), ElementsAre(reply(0x0200000B, 6)));
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(Dispatch, EveryFixedReadReadsItsItem) {
  EXPECT_EQ(fallback_rde_id_of(0x02000007, 8), 28u);
  EXPECT_EQ(fallback_rde_id_of(0x0200000A, 8), 32u);
  EXPECT_EQ(rde_id_of(0x02000017, 8), 38u);
  EXPECT_EQ(rde_id_of(0x02000019, 8), 39u);
  EXPECT_EQ(rde_id_of(0x0200000D, 8), 10003u);
  EXPECT_EQ(rde_id_of(0x0200000F, 8), 37u);
}

TEST_F(Dispatch, EveryFixedWriteWritesItsItem) {
  EXPECT_EQ(rde_id_of(0x02000008, 9), 28u);
  EXPECT_EQ(rde_id_of(0x02000018, 9), 38u);
  EXPECT_EQ(rde_id_of(0x0200001A, 9), 39u);
  EXPECT_EQ(rde_id_of(0x0200000E, 9), 10003u);
  EXPECT_EQ(rde_id_of(0x02000010, 9), 37u);
}

TEST_F(Dispatch, GeneralRequestsTakeTheItemFromThePayload) {
  Bytes address = le32(4711) + le32(1) + le32(2) + le32(1);
  EXPECT_EQ(fallback_rde_id_of(0x02000016, 8, address), 4711u);
  EXPECT_EQ(fallback_rde_id_of(0x02000015, 9, address + Bytes{0x55}), 4711u);
}

TEST_F(Dispatch, NullCdmaRequestCountsAsServed) {
  dispatch_cdma(nullptr, 0x02000016);
  EXPECT_THAT(trace, ElementsAre("log: qorext_hook_sprint_handler: ENTER ",
                                 "log: qorext_hook_sprint_handler: p_hdr == NULL ",
                                 "log: 0x2000016 is handled by Sprint handler."));
}

TEST_F(Dispatch, FailedWriteOfARefusalIsLogged) {
  write_errnos = {EBADF};
  const std::string kFailed = "log: Write to parent failed 9";
  cdma(0x0200000B);
  EXPECT_EQ(trace.back(), kFailed);
  ask(Request::generic(0x50506));
  EXPECT_EQ(trace.back(), kFailed);
}

}  // namespace dispatch_test
