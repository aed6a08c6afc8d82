// SPDX-License-Identifier: Apache-2.0
#include "src/capture/kpi_packets.h"

#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace kpi_packets_test {

constexpr uint32_t kLogStart = 0x01C0FFEE;
constexpr uint32_t kHeaderless = 0xFFFFFFFF;

class KpiPackets : public FakePhone {
 protected:
  KpiAction check(uint8_t package, uint8_t sequence, const Bytes& payload) {
    trace.clear();
    return check_kpi_packet(receiver, {package, sequence, false,
                                       static_cast<uint16_t>(payload.size()), payload.data()});
  }
  KpiAction first(uint8_t package, uint32_t header = kLogStart) {
    return check(package, 1, le32(header) + Bytes{0x55});
  }
  KpiAction next(uint8_t package, uint8_t sequence) { return check(package, sequence, {0x55}); }

  void expect_receiving(int32_t package, int32_t expected) const {
    EXPECT_EQ(receiver.package_id, package);
    EXPECT_EQ(receiver.expected_sequence, expected);
  }
  void expect_idle() const { expect_receiving(-1, -1); }

  KpiReceiver receiver;
};

TEST_F(KpiPackets, ReceiverStartsIdle) { expect_idle(); }

TEST_F(KpiPackets, EachHeaderWordHasItsAction) {
  const std::pair<uint32_t, KpiAction> rows[] = {
      {0x01C0FFEE, kKpiStoreWithoutHeader},
      {0xFFFFFFFF, kKpiStore},
      {0x02C0FFEE, kKpiForward},
      {0x03C0FFEE, kKpiForward},
      {0x06C0FFEE, kKpiForward},
      {0x07C0FFEE, kKpiForward},
      {0x08C0FFEE, kKpiForward},
  };
  for (auto [header, action] : rows) {
    receiver.reset();
    EXPECT_EQ(first(7, header), action) << std::hex << header;
    char digits[16];
    snprintf(digits, sizeof digits, "%x", header);
    EXPECT_THAT(logs(), ElementsAre(std::string("vornIndHndlr: header 0x") + digits));
  }
}

TEST_F(KpiPackets, UnknownHeaderIsLoggedAndStored) {
  for (auto [header, digits] :
       {std::pair{0x04C0FFEEu, "4c0ffee"}, std::pair{0x05C0FFEEu, "5c0ffee"},
        std::pair{0x09C0FFEEu, "9c0ffee"}, std::pair{0u, "0"}}) {
    receiver.reset();
    EXPECT_EQ(first(7, header), kKpiStore);
    EXPECT_THAT(logs(), ElementsAre(std::string("vornIndHndlr: header 0x") + digits,
                                    std::string("vornIndHndlr: unknown header 0x") + digits));
    expect_receiving(7, 2);
  }
}

TEST_F(KpiPackets, FirstPacketStartsAPackageAndContinuationsCountUp) {
  EXPECT_EQ(first(7), kKpiStoreWithoutHeader);
  expect_receiving(7, 2);
  EXPECT_EQ(next(7, 2), kKpiStore);
  EXPECT_THAT(trace, IsEmpty());
  expect_receiving(7, 3);
  EXPECT_EQ(next(7, 3), kKpiStore);
  expect_receiving(7, 4);
}

TEST_F(KpiPackets, HeaderWordOfAContinuationIsIgnored) {
  first(7, kHeaderless);
  EXPECT_EQ(check(7, 2, le32(0x02C0FFEE) + Bytes{1}), kKpiStore);
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(KpiPackets, PackageMayStartInTheMiddle) {
  EXPECT_EQ(next(9, 17), kKpiStore);
  EXPECT_THAT(trace, IsEmpty());
  expect_receiving(9, 18);
  EXPECT_EQ(next(9, 18), kKpiStore);
}

TEST_F(KpiPackets, PackageIdZeroAndSequenceIdZeroAreValid) {
  EXPECT_EQ(next(0, 0), kKpiStore);
  expect_receiving(0, 1);
  EXPECT_EQ(first(0), kKpiStoreWithoutHeader);
  expect_receiving(0, 2);
}

TEST_F(KpiPackets, OtherPackageIsDroppedAndResets) {
  first(7);
  EXPECT_EQ(next(8, 2), kKpiDrop);
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong pckage id [8] received, cur [7]"));
  expect_idle();
}

TEST_F(KpiPackets, OtherSequenceIdIsDroppedAndResets) {
  for (uint8_t sequence : Bytes{0, 3, 255}) {
    receiver.reset();
    first(7);
    EXPECT_EQ(next(7, sequence), kKpiDrop);
    EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong seq id [" + std::to_string(sequence) +
                                   "] received, cur [2]"));
    expect_idle();
  }
}

TEST_F(KpiPackets, RepeatedContinuationIsDropped) {
  first(7);
  next(7, 2);
  EXPECT_EQ(next(7, 2), kKpiDrop);
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong seq id [2] received, cur [3]"));
  expect_idle();
}

TEST_F(KpiPackets, SequenceIdsDoNotWrapAfter255) {
  receiver = {7, 255};
  EXPECT_EQ(next(7, 255), kKpiStore);
  expect_receiving(7, 256);
  EXPECT_EQ(next(7, 0), kKpiDrop);
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong seq id [0] received, cur [256]"));
}

TEST_F(KpiPackets, EmptyPayloadIsDroppedAndResets) {
  for (uint8_t sequence : Bytes{1, 2}) {
    receiver = {7, 2};
    EXPECT_EQ(check(7, sequence, {}), kKpiDrop);
    EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: zero pckage size"));
    expect_idle();
  }
}

TEST_F(KpiPackets, FirstPacketOfFourBytesOrLessHasABadHeader) {
  Bytes header = le32(kLogStart);
  for (size_t size = 1; size <= 4; ++size) {
    EXPECT_EQ(check(7, 1, Bytes(header.begin(), header.begin() + static_cast<long>(size))),
              kKpiDrop);
    EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: bad header"));
    expect_idle();
  }
  EXPECT_EQ(check(7, 1, header + Bytes{0x55}), kKpiStoreWithoutHeader);
}

TEST_F(KpiPackets, ContinuationMayBeAsShortAsOneByte) {
  first(7);
  EXPECT_EQ(check(7, 2, {1}), kKpiStore);
}

TEST_F(KpiPackets, ChecksHaveAnOrder) {
  receiver = {7, 5};
  check(8, 9, {});
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong pckage id [8] received, cur [7]"));
  receiver = {7, 5};
  check(7, 9, {});
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong seq id [9] received, cur [5]"));
}

TEST_F(KpiPackets, FirstPacketDuringItsOwnPackageContinuesTheCount) {
  first(7);
  next(7, 2);
  EXPECT_EQ(first(7), kKpiStoreWithoutHeader);
  expect_receiving(7, 4);
  EXPECT_EQ(next(7, 2), kKpiDrop);
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong seq id [2] received, cur [4]"));
}

TEST_F(KpiPackets, InterleavedPackageIsDroppedOnceAndThenStored) {
  first(7);
  EXPECT_EQ(first(8), kKpiDrop);
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong pckage id [8] received, cur [7]"));
  expect_idle();
  EXPECT_EQ(next(8, 2), kKpiStore);
  expect_receiving(8, 3);
  EXPECT_EQ(next(7, 2), kKpiDrop);
  expect_idle();
}

TEST_F(KpiPackets, PacketAfterARejectionIsAccepted) {
  first(7);
  next(7, 9);
  EXPECT_EQ(next(7, 10), kKpiStore);
  expect_receiving(7, 11);
}

TEST_F(KpiPackets, RecordDoesNotCount) {
  first(7);
  EXPECT_EQ(first(7, 0x02C0FFEE), kKpiForward);
  EXPECT_EQ(receiver.expected_sequence, 2);
}

}  // namespace kpi_packets_test
