// SPDX-License-Identifier: Apache-2.0
#include "src/capture/capture.h"

#include "tests/unit/product/capture_phone.h"
#include "tests/unit/product/serving_phone.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace kpi_intake_test {

constexpr uint32_t kRecord = 0x02C0FFEE;
constexpr uint32_t kLogStart = 0x01C0FFEE;
constexpr char kTemporary[] = "/data/vorn/~vorn0009.log";
constexpr char kRecordSent[] = "log: vorn_handle_kpi_data: send data out";

Bytes packet(uint8_t package, uint8_t sequence, uint16_t size, const Bytes& payload) {
  return Bytes{package, sequence, 0, 0xEE} + le16(size) + payload;
}
Bytes packet(uint8_t package, uint8_t sequence, const Bytes& payload) {
  return packet(package, sequence, static_cast<uint16_t>(payload.size()), payload);
}

// The frame of a forwarded record.
std::string record_frame(const Bytes& data) {
  return hex(le32(1) + le32(8) + Bytes{0x01, 0x04, 0x00, 0x04} +
             le32(static_cast<uint32_t>(data.size())) + data + Bytes(12));
}

std::string as_text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

class KpiIntake : public CapturePhone {
 protected:
  KpiIntake() {
    set_parent_pipes(kReplyFd, kUnsolicitedFd);
    make_folder("/data/vorn");
    take(packet(0, 0, {}));  // resets the receiver
    trace.clear();
  }

  void take(Bytes bytes) {
    trace.clear();
    bytes.resize(512);
    vornIndHndlr(bytes.data());
  }
};

TEST_F(KpiIntake, RecordIsForwardedWithItsHeaderWord) {
  const std::pair<uint32_t, const char*> rows[] = {{0x02C0FFEE, "2c0ffee"},
                                                   {0x03C0FFEE, "3c0ffee"},
                                                   {0x06C0FFEE, "6c0ffee"},
                                                   {0x07C0FFEE, "7c0ffee"},
                                                   {0x08C0FFEE, "8c0ffee"}};
  for (auto [header, digits] : rows) {
    Bytes payload = le32(header) + numbered(20);
    take(packet(7, 1, payload));
    EXPECT_THAT(trace, ElementsAre(std::string("log: vornIndHndlr: header 0x") + digits,
                                   "unsol: " + record_frame(payload), kRecordSent));
  }
  EXPECT_TRUE(std::filesystem::is_empty(at("/data/vorn")));
}

TEST_F(KpiIntake, FrameOfARecordHasTheseBytes) {
  take(packet(7, 1, le32(kRecord) + Bytes{0xAB}));
  EXPECT_THAT(unsolicited(), ElementsAre("01000000 08000000 01040004 05000000 EEFFC002 AB"
                                         "000000000000000000000000"_hex));
}

TEST_F(KpiIntake, SizeOfARecordIsItsLowByte) {
  Bytes payload = le32(kRecord) + numbered(502);
  const std::pair<uint16_t, size_t> rows[] = {{5, 5},   {255, 255}, {256, 0},
                                              {257, 1}, {300, 44},  {506, 250}};
  for (auto [size, forwarded] : rows) {
    take(packet(7, 1, size, payload));
    Bytes data(payload.begin(), payload.begin() + static_cast<long>(forwarded));
    EXPECT_THAT(unsolicited(), ElementsAre(record_frame(data))) << size;
  }
}

TEST_F(KpiIntake, ZerosInARecordAreKept) {
  Bytes payload = le32(kRecord) + Bytes{0, 1, 0, 0, 2, 0, 3};
  take(packet(7, 1, payload));
  EXPECT_THAT(unsolicited(), ElementsAre(record_frame(payload)));
}

TEST_F(KpiIntake, RecordResetsTheReceiver) {
  take(packet(7, 1, le32(kRecord) + Bytes{1}));
  take(packet(9, 5, {1, 2}));
  EXPECT_THAT(trace, IsEmpty());
  EXPECT_EQ(content(kTemporary), "\1\2");
}

TEST_F(KpiIntake, RecordDuringAPackageEndsThePackage) {
  take(packet(7, 1, le32(kLogStart) + Bytes{1}));
  take(packet(7, 1, le32(kRecord) + Bytes{1}));
  take(packet(9, 5, {1}));
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(KpiIntake, RecordThatCannotBeWrittenIsLoggedAndResets) {
  write_errnos = {EPIPE};
  take(packet(7, 1, le32(kRecord) + Bytes{1}));
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: header 0x2c0ffee",
                                 "log: Write to parent failed 32", kRecordSent));
  take(packet(9, 5, {1}));
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(KpiIntake, RecordWithoutMemoryIsDroppedAndResets) {
  allocations_left = 0;
  take(packet(7, 1, le32(kRecord) + Bytes{1}));
  EXPECT_THAT(unsolicited(), IsEmpty());
  allocations_left = -1;
  take(packet(9, 5, {1}));
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(KpiIntake, SizeBeyondThePacketForwardsZeros) {
  take(packet(7, 1, 40, le32(kRecord) + Bytes{0xAB, 0xCD}));
  EXPECT_THAT(unsolicited(),
              ElementsAre(record_frame(le32(kRecord) + Bytes{0xAB, 0xCD} + Bytes(34))));
}

TEST_F(KpiIntake, SizeBeyondThePacketStoresZeros) {
  Bytes held = numbered(506);
  take(packet(9, 2, 5000, held));
  EXPECT_EQ(content(kTemporary), as_text(held + Bytes(5000 - 506)));
  take(packet(9, 3, 65535, {0x55}));
  EXPECT_EQ(content(kTemporary), as_text(held + Bytes(5000 - 506) + Bytes{0x55} + Bytes(65534)));
}

TEST_F(KpiIntake, LogStartIsStoredWithoutItsHeaderWord) {
  take(packet(9, 1, le32(kLogStart) + Bytes{0x41}));
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: header 0x1c0ffee"));
  EXPECT_EQ(content(kTemporary), "A");
  take(packet(9, 2, le32(kLogStart)));
  EXPECT_EQ(content(kTemporary), "A\xEE\xFF\xC0\x01");
}

TEST_F(KpiIntake, HeaderlessAndUnknownPackagesAreStoredCompletely) {
  for (uint32_t header : {0xFFFFFFFFu, 0x12345678u}) {
    take(packet(9, 1, le32(header) + Bytes{0x41}));
    EXPECT_EQ(content(kTemporary), as_text(le32(header) + Bytes{0x41}));
    take(packet(9, 99, {}));
  }
}

TEST_F(KpiIntake, RejectedPacketDoesNotChangeTheFileOfItsPackage) {
  take(packet(9, 1, le32(kLogStart) + Bytes{0x41}));
  take(packet(9, 7, {0x42}));
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong seq id [7] received, cur [2]"));
  EXPECT_EQ(content(kTemporary), "A");
}

TEST_F(KpiIntake, InterleavedPackageIsStoredFromItsSecondPacketOn) {
  take(packet(7, 1, le32(kLogStart) + Bytes{0x41}));
  take(packet(9, 1, le32(kLogStart) + Bytes{0x42}));
  EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: wrong pckage id [9] received, cur [7]"));
  EXPECT_FALSE(has(kTemporary));
  take(packet(9, 2, {0x43}));
  EXPECT_EQ(content(kTemporary), "C");
  EXPECT_EQ(content("/data/vorn/~vorn0007.log"), "A");
}

TEST_F(KpiIntake, LastPacketIsMergedAndResetsTheReceiver) {
  Bytes last = packet(9, 1, le32(kLogStart) + Bytes{0x41});
  last[2] = 1;
  take(last);
  EXPECT_THAT(logs(), Contains("vornIndHndlr: received the last pkg of 9"));
  EXPECT_FALSE(has(kTemporary));
  EXPECT_EQ(content(target("/data/vorn/.0001")), "A");
  take(packet(7, 5, {1}));
  EXPECT_THAT(trace, IsEmpty());
}

TEST_F(KpiIntake, LastPacketFlagsOtherThanOneDoNotEndThePackage) {
  for (uint8_t flag : Bytes{0, 2, 0x81, 0xFF}) {
    Bytes bytes = packet(9, 1, le32(kLogStart) + Bytes{0x41});
    bytes[2] = flag;
    take(bytes);
    EXPECT_THAT(trace, ElementsAre("log: vornIndHndlr: header 0x1c0ffee"));
    EXPECT_EQ(content(kTemporary), "A");
  }
}

TEST_F(KpiIntake, UtilityIndicationOfTypeOneIsAPacket) {
  Bytes payload = le32(kRecord) + numbered(8);
  Bytes data = packet(7, 1, payload);
  data.resize(512);
  decode_to(0x0F, le32(1) + le32(18) + data);
  handleUnsolMsg(vendor_client(), 0x0F, encoded.data(), 5, nullptr);
  EXPECT_THAT(
      logs(),
      ElementsAre("Handling unsol msg 15", "Unsol resp 0xf not supported by Sprint handler.",
                  "vornIndHndlr: header 0x2c0ffee", "vorn_handle_kpi_data: send data out"));
  EXPECT_THAT(unsolicited(), ElementsAre(record_frame(payload)));
}

}  // namespace kpi_intake_test
