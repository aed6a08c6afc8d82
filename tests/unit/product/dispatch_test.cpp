#include "host/dispatch.h"

#include "fake_phone.h"
#include "host/parent.h"
#include "requests.h"
#include "vendor/vendor_client.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Dispatch : public FakePhone {
 protected:
  Dispatch() {
    set_parent_pipes(kReplyFd, kUnsolicitedFd);
    qmi_qorext_hook_client_init();
    trace.clear();
  }

  void cdma(uint32_t id, const Bytes& payload = {}) {
    dispatch_cdma(Request::cdma(id, payload).data(), id);
  }

  // The RDE id that a request of this id asks the modem for.
  uint32_t rde_id_of(uint32_t id, unsigned int message) {
    exchanges.clear();
    cdma(id, Bytes(4));
    EXPECT_EQ(exchanges.size(), 1u) << std::hex << id;
    if (exchanges.size() != 1) return 0;
    EXPECT_EQ(exchanges[0].id, message) << std::hex << id;
    return load_le32(exchanges[0].request.data());
  }
};

TEST_F(Dispatch, UnknownGenericIdGetsTheErrorReply) {
  Request request = Request::generic(0x50506);
  dispatch_generic(request.data(), 0x50506);
  EXPECT_THAT(trace, ElementsAre("log: 0x60505 not supported", "reply: 01050506FFFFFFFF"));
}

TEST_F(Dispatch, UnknownCdmaIdGetsStatusSix) {
  cdma(0x02000011);
  EXPECT_THAT(trace, ElementsAre("log: qorext_hook_sprint_handler: ENTER ",
                                 "log: qorext_hook_sprint_handler: Unexpected MSG ID: 33554449",
                                 "log: 0x2000011 not supported by Sprint handler.",
                                 "log: 0x2000011 not supported", "reply: " + reply(0x02000011, 6)));
}

TEST_F(Dispatch, NeighbourOfAReadIdIsNotItsWriteId) {
  cdma(0x0200000B);
  EXPECT_THAT(replies(), ElementsAre(reply(0x0200000B, 6)));
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(Dispatch, EveryFixedReadAsksForItsItem) {
  EXPECT_EQ(rde_id_of(0x02000007, 8), 28u);
  EXPECT_EQ(rde_id_of(0x0200000A, 8), 32u);
  EXPECT_EQ(rde_id_of(0x02000017, 8), 38u);
  EXPECT_EQ(rde_id_of(0x02000019, 8), 39u);
  EXPECT_EQ(rde_id_of(0x0200000D, 8), 10003u);
  EXPECT_EQ(rde_id_of(0x0200000F, 8), 37u);
}

TEST_F(Dispatch, EveryFixedWriteGoesToItsItem) {
  EXPECT_EQ(rde_id_of(0x02000008, 9), 28u);
  EXPECT_EQ(rde_id_of(0x02000018, 9), 38u);
  EXPECT_EQ(rde_id_of(0x0200001A, 9), 39u);
  EXPECT_EQ(rde_id_of(0x0200000E, 9), 10003u);
  EXPECT_EQ(rde_id_of(0x02000010, 9), 37u);
}

TEST_F(Dispatch, GeneralRequestsTakeTheItemFromThePayload) {
  cdma(0x02000016, le32(4711) + le32(1) + le32(2) + le32(3));
  cdma(0x02000015, le32(4712) + le32(1) + le32(2) + le32(1) + Bytes{0x55});
  ASSERT_EQ(exchanges.size(), 2u);
  EXPECT_EQ(exchanges[0].id, 8u);
  EXPECT_EQ(load_le32(exchanges[0].request.data()), 4711u);
  EXPECT_EQ(exchanges[1].id, 9u);
  EXPECT_EQ(load_le32(exchanges[1].request.data()), 4712u);
}

TEST_F(Dispatch, NullCdmaRequestCountsAsServed) {
  dispatch_cdma(nullptr, 0x02000016);
  EXPECT_THAT(trace, ElementsAre("log: qorext_hook_sprint_handler: ENTER ",
                                 "log: qorext_hook_sprint_handler: p_hdr == NULL ",
                                 "log: 0x2000016 is handled by Sprint handler."));
}

TEST_F(Dispatch, FailedWriteOfARefusalIsLogged) {
  write_errno = EBADF;
  cdma(0x0200000B);
  dispatch_generic(Request::generic(0x50506).data(), 0x50506);
  EXPECT_THAT(logs(), testing::Contains("Write to parent failed 9").Times(2));
}

}  // namespace
