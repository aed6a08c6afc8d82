// SPDX-License-Identifier: Apache-2.0
// Each allocation fails in turn.
#include "tests/e2e/support/faulty_handset.h"

namespace e2e {
namespace {

struct AllocatingRequest {
  const char* name;
  Bytes request;
  Bytes failure;  // the reply after a failed allocation
};

std::vector<AllocatingRequest> allocating_requests() {
  std::vector<AllocatingRequest> all = {
      {"GeneralRead", nv_read(28), nv_item(28, hex("06"))},
      {"GeneralWrite", cdma(kNvWrite, words({7000, 0, 0, 1}) + hex("01")), reply(kNvWrite, 0)},
      {"MobileRevision", cdma(0x02000007), reply(0x02000007, 0, hex("06000000"))},
      {"SubsidyLock", cdma(0x0200000A, {}, "246810"), reply(0x0200000A, 5)},
      {"FixedRead", cdma(0x0200000D), {}},
      {"UselessRead", cdma(0x02000017), {}},
      {"Utility", cdma(0x0200001E, words({7, 1}) + zeros(256)), {}},
      {"SilentReboot", generic(0x50019), {}},
      {"Filter", generic(0x5001E, hex("01")), {}},
      {"Coverage", generic(0x50020, hex("6100")), {}},
      {"CallEndState", generic(0x50505, hex("01")), {}},
      {"OperatorName", generic(0xA0006, le16(1) + le16(1)), {}},
      {"AntennaTuning", generic(0x5002A, hex("01")), {}},
  };
  // The carrier handler fails; the table that is searched next does not have the id.
  auto unknown_to_the_table = [&](const char* name, const Bytes& request) {
    all.push_back({name, request, reply(qorextctl::load_le(request, 0, 4), 6)});
  };
  unknown_to_the_table("NamGet", cdma(0x02000001));
  unknown_to_the_table("NamSet", cdma(0x02000002, zeros(104)));
  unknown_to_the_table("PairsGet", cdma(0x02000003));
  unknown_to_the_table("PairsSet", cdma(0x02000004, zeros(160)));
  unknown_to_the_table("CallProcessing", cdma(0x02000011));
  unknown_to_the_table("Evdo", cdma(0x02000012));
  unknown_to_the_table("Akey", cdma(0x02000013, zeros(26)));
  for (uint32_t id = 0x020000B0; id <= 0x020000CB; ++id) {
    unknown_to_the_table("Carrier", cdma(id, zeros(64)));
  }
  return all;
}

const Bytes kRequestsWithoutAllocation[] = {
    generic(0x70000),
    generic(0x60001),
    cdma(0x02000014),
    cdma(0x0200001C),
    cdma(0x02000018, hex("01")),
    hex("FFFFFFFF00"),
};

class OutOfMemory : public FaultyHandset {
 protected:
  // Serves while the n-th allocation of the main thread fails; nullopt if there was no n-th one.
  std::optional<std::string> serve_without_memory(const Bytes& request, uint32_t n) {
    switches->failing_threads = Threads::main;
    switches->failing_allocation = n;
    std::string replies = handset.serve(request).replies;
    if (switches->failing_allocation.exchange(0) != 0) return std::nullopt;
    return replies;
  }

  // Returns whether the n-th allocation of the other threads failed. If not, the message has
  // arrived.
  bool indicate_without_memory(const std::string& indication, uint32_t n) {
    switches->failing_threads = Threads::others;
    switches->failing_allocation = n;
    handset.indicate("" + indication);
    auto& pipe = handset.daemon().unsolicited();
    Deadline deadline = time_limit();
    while (switches->failing_allocation != 0) {
      pipe.read_available();
      if (pipe.ended() || deadline.passed())
        throw std::runtime_error("the daemon sends no message");
      if (pipe.pending().empty()) continue;
      switches->failing_allocation = 0;
      return false;
    }
    return true;
  }
};

TEST_F(OutOfMemory, AffectsOneReplyAtEachAllocation) {
  for (const auto& [name, request, failure] : allocating_requests()) {
    SCOPED_TRACE(std::string(name) + " " + as_hex(request));
    std::string whole = handset.serve(request).replies;
    uint32_t n = 1;
    while (auto replies = serve_without_memory(request, n)) {
      EXPECT_EQ(*replies, as_hex(failure)) << "allocation " << n;
      ++n;
    }
    EXPECT_GT(n, 1U) << "nothing was allocated";
    EXPECT_EQ(handset.serve(request).replies, whole);
  }
}

TEST_F(OutOfMemory, DoesNotAffectRequestsWithoutAllocation) {
  for (const Bytes& request : kRequestsWithoutAllocation) {
    SCOPED_TRACE(as_hex(request));
    EXPECT_NE(handset.serve(request).replies, "");
    EXPECT_EQ(serve_without_memory(request, 1), std::nullopt);
  }
}

TEST_F(OutOfMemory, AffectsOneMessageAtEachAllocation) {
  for (const char* indication :
       {"notify", "utils type=2 data=0A0B", "utils type=1 data=010101000500EEFFC002A1",
        "carrier_event value=7", "lte_error", "coverage", "pfp"}) {
    SCOPED_TRACE(indication);
    uint32_t n = 1;
    while (indicate_without_memory(indication, n)) {
      EXPECT_LE(handset.messages_until_idle().size(), 1U);
      ++n;
    }
    EXPECT_GT(n, 1U) << "nothing was allocated";
    EXPECT_EQ(handset.messages_until_idle().size(), 1U);
  }
  EXPECT_EQ(handset.serve(band_query).replies, band_reply);
}

TEST_F(OutOfMemory, IsLoggedForTheCarriersMessages) {
  for (uint32_t n = 1; indicate_without_memory("lte_error", n); ++n) handset.messages_until_idle();
  EXPECT_THAT(handset.log().texts(), testing::Contains("send_unsol_response: out of memory!"));
}

TEST_F(OutOfMemory, AffectsOnlyTheFilesThatAreBeingWritten) {
  for (const char* indication :
       {"utils type=7 data=01", "utils type=1 data=010101000800FFFFFFFFA1A2A3A4", "hob_save"}) {
    SCOPED_TRACE(indication);
    for (uint32_t n = 1; n <= 40; ++n) {
      switches->failing_threads = Threads::others;
      switches->failing_allocation = n;
      handset.indicate(indication);
      handset.indicate("notify --count 2");
      handset.next_message();
      switches->failing_allocation = 0;
      handset.messages_until_idle();
    }
  }
  handset.indicate("utils type=7 data=01");
  handset.messages_until_idle();
  EXPECT_EQ(handset.phone().property("ril.baseband.rfcable.status"), "1");
}

}  // namespace
}  // namespace e2e
