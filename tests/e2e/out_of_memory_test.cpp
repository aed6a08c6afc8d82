// SPDX-License-Identifier: Apache-2.0
// Memory that is not there, at one allocation after the other.
#include "tests/e2e/support/faulty_handset.h"

namespace e2e {
namespace {

struct Starved {
  const char* name;
  Bytes request;
  Bytes reply;  // that comes instead
};

// A reply of the carrier handler that cannot be made: the request is offered to the table behind
// it.
const Bytes kRequestOfItem = words({28, 0, 0, 0});

std::vector<Starved> starved_requests() {
  std::vector<Starved> all = {
      {"GeneralRead", cdma(0x02000016, kRequestOfItem),
       reply(0x02000016, 0, words({28, 0, 0, 1}) + hex("06") + zeros(4))},
      {"GeneralWrite", cdma(0x02000015, words({7000, 0, 0, 1}) + hex("01")), reply(0x02000015, 0)},
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

// Those that need no memory of their own.
const Bytes kFrugalRequests[] = {
    generic(0x70000),
    generic(0x60001),
    cdma(0x02000014),
    cdma(0x0200001C),
    cdma(0x02000018, hex("01")),
    hex("FFFFFFFF00"),
};

class OutOfMemory : public FaultyHandset {
 protected:
  // The n-th allocation of the main thread fails. Nothing when there was none.
  std::optional<std::string> serve_starved(const Bytes& request, uint32_t n) {
    switches->failing_threads = Threads::main;
    switches->failing_allocation = n;
    std::string replies = handset->serve(request).replies;
    if (switches->failing_allocation.exchange(0) != 0) return std::nullopt;
    return replies;
  }

  // Whether the n-th allocation of other threads has failed. Otherwise the message is there.
  bool starve_report(const std::string& indication, uint32_t n) {
    switches->failing_threads = Threads::others;
    switches->failing_allocation = n;
    handset->modem().command("indicate " + indication);
    auto& pipe = handset->daemon().unsolicited();
    auto deadline = qorextctl::Deadline::in(kPatience);
    while (switches->failing_allocation != 0) {
      pipe.read_available();
      if (pipe.ended() || deadline.passed()) throw std::runtime_error("the daemon reports nothing");
      if (pipe.pending().empty()) continue;
      switches->failing_allocation = 0;
      return false;
    }
    return true;
  }
};

TEST_F(OutOfMemory, CostsOneReplyWhereverItIsMet) {
  for (const auto& [name, request, instead] : starved_requests()) {
    SCOPED_TRACE(std::string(name) + " " + as_hex(request));
    std::string whole = handset->serve(request).replies;
    uint32_t n = 1;
    while (auto replies = serve_starved(request, n)) {
      EXPECT_EQ(*replies, as_hex(instead)) << "allocation " << n;
      ++n;
    }
    EXPECT_GT(n, 1U) << "nothing was allocated";
    EXPECT_EQ(handset->serve(request).replies, whole);
  }
}

TEST_F(OutOfMemory, IsNothingToRequestsThatNeedNone) {
  for (const Bytes& request : kFrugalRequests) {
    SCOPED_TRACE(as_hex(request));
    EXPECT_NE(handset->serve(request).replies, "");
    EXPECT_EQ(serve_starved(request, 1), std::nullopt);
  }
}

TEST_F(OutOfMemory, CostsOneMessageWhereverItIsMet) {
  for (const char* indication :
       {"notify", "utils type=2 data=0A0B", "utils type=1 data=010101000500EEFFC002A1",
        "carrier_event value=7", "lte_error", "coverage", "pfp"}) {
    SCOPED_TRACE(indication);
    uint32_t n = 1;
    while (starve_report(indication, n)) {
      EXPECT_LE(messages_until_idle().size(), 1U);
      ++n;
    }
    EXPECT_GT(n, 1U) << "nothing was allocated";
    EXPECT_EQ(messages_until_idle().size(), 1U);
  }
  EXPECT_EQ(handset->serve(band_query).replies, band_reply);
}

TEST_F(OutOfMemory, LeavesTheCarriersMessagesAWord) {
  for (uint32_t n = 1; starve_report("lte_error", n); ++n) messages_until_idle();
  EXPECT_THAT(handset->log().texts(), testing::Contains("send_unsol_response: out of memory!"));
}

TEST_F(OutOfMemory, CostsNoMoreThanTheFilesThatAreNotWritten) {
  for (const char* indication :
       {"utils type=7 data=01", "utils type=1 data=010101000800FFFFFFFFA1A2A3A4", "hob_save"}) {
    SCOPED_TRACE(indication);
    for (uint32_t n = 1; n <= 40; ++n) {
      switches->failing_threads = Threads::others;
      switches->failing_allocation = n;
      handset->modem().command(std::string("indicate ") + indication);
      handset->modem().command("indicate notify --count 2");
      next_message();
      switches->failing_allocation = 0;
      messages_until_idle();
    }
  }
  handset->modem().command("indicate utils type=7 data=01");
  messages_until_idle();
  EXPECT_EQ(handset->phone().property("ril.baseband.rfcable.status"), "1");
}

}  // namespace
}  // namespace e2e
