// SPDX-License-Identifier: Apache-2.0
// Indications beyond the bound of a client's queue.
#include <gmock/gmock.h>

#include "tests/unit/platform/client_support.h"

namespace client_test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kBoundVariable[] = "QOREXT_INDICATION_QUEUE";
constexpr size_t kDefaultBound = 64 << 20;
constexpr size_t kMinBound = 128 << 10;

// An indication of about `size` bytes that carries a number.
Bytes indication_of(uint32_t number, size_t size) {
  Bytes tlvs = {0x01, 4, 0, 0, 0, 0, 0, 0x10, 0, 0};
  codec_test::put(tlvs, 3, number, 4);
  size_t room = size - qmi_idl::kHeaderSize - tlvs.size();
  codec_test::put(tlvs, 8, room, 2);
  tlvs.resize(tlvs.size() + room);
  return packet_of(WireType::indication, 0, 0x7FFF, tlvs);
}

// The numbers in the log line about a burst.
struct Report {
  size_t dropped = 0;
  size_t queued = 0;
  size_t bound = 0;
};

Report parse(const std::string& line) {
  Report report;
  int parsed = sscanf(line.c_str(),
                      "qmi_cci: Dropped %zu indications: the queue is full, %zu of at most %zu "
                      "bytes queued",
                      &report.dropped, &report.queued, &report.bound);
  EXPECT_EQ(parsed, 3) << line;
  return report;
}

class Overflow : public ModemAndClient, public testing::TestWithParam<TransportKind> {
 protected:
  Overflow() : ModemAndClient(GetParam(), {.queue = 2 * kDefaultBound}) {}

  void open(const std::optional<std::string>& bound) {
    std::optional<ScopedEnv> variable;
    if (bound) variable.emplace(kBoundVariable, *bound);
    ModemAndClient::open(Turnstile::callback, &turnstile_);
    expect_requests_are_served();
  }

  // The client has read everything that was sent before the response.
  void expect_requests_are_served() {
    ++requests_;
    EXPECT_EQ(read_band(client_, requests_), success(requests_));
  }

  void indicate(size_t count, size_t size = kSize) {
    modem_.run([&](Server& server) {
      Peer peer = server.peers(qorext().id).at(0);
      for (size_t i = 0; i < count; ++i) server.send(peer, indication_of(sent_++, size));
    });
    expect_requests_are_served();
  }

  // Sends more than the queue holds, after one that is in the callback.
  void overflow() {
    size_t entered = turnstile_.entered;
    indicate(1);
    EXPECT_TRUE(eventually([&] { return turnstile_.entered > entered; }));
    indicate(2 * kBound / kSize);
    EXPECT_THAT(take_log_lines(), IsEmpty());
  }

  // Lets one callback return and waits for the next, by which time an ended burst is logged.
  void let_one_return() {
    size_t entered = turnstile_.entered;
    turnstile_.let_one_through();
    EXPECT_TRUE(eventually([&] { return turnstile_.entered > entered; }));
  }

  void expect_all_but(size_t dropped) {
    turnstile_.open();
    EXPECT_TRUE(eventually([&] { return turnstile_.seen.count() == sent_ - dropped; }))
        << turnstile_.seen.count() << " of " << sent_ << " without " << dropped;
  }

  // The one burst that has been logged since the last call.
  Report next_report() {
    auto lines = next_lines();
    EXPECT_THAT(lines, testing::SizeIs(1));
    Report report = lines.empty() ? Report{} : parse(lines[0]);
    EXPECT_GT(report.dropped, 0u);
    return report;
  }

  std::vector<std::string> next_lines() {
    std::vector<std::string> lines;
    EXPECT_TRUE(eventually([&] { return !(lines = take_log_lines()).empty(); }));
    return lines;
  }

  static constexpr size_t kSize = 500;
  static constexpr size_t kBound = 256 << 10;

  uint32_t sent_ = 0;
  uint32_t requests_ = 0;
};

TEST_P(Overflow, DropsTheNewestIndicationsWhileRequestsAreServed) {
  open(std::to_string(kBound));
  overflow();
  for (int i = 0; i < 100; ++i) expect_requests_are_served();
  EXPECT_THAT(take_log_lines(), IsEmpty());

  turnstile_.open();
  Report report = next_report();
  EXPECT_EQ(report.bound, kBound);
  EXPECT_LE(report.queued, kBound);
  EXPECT_GT(report.queued, kBound - 2 * kSize);
  expect_all_but(report.dropped);
  size_t taken = sent_ - report.dropped;
  EXPECT_LE((taken - 1) * kSize, kBound);
  EXPECT_GT(taken * kSize, kBound * 9 / 10);
  for (uint32_t i = 0; i < taken; ++i) ASSERT_EQ(turnstile_.seen.numbers[i], i);
  EXPECT_THAT(take_log_lines(), IsEmpty());
}

TEST_P(Overflow, EndsWhenHalfOfTheQueueHasBeenCalledBack) {
  open(std::to_string(kBound));
  overflow();
  size_t quarter = kBound / kSize / 4;
  for (size_t i = 0; i < quarter; ++i) let_one_return();
  indicate(10);
  EXPECT_THAT(take_log_lines(), IsEmpty());

  std::vector<std::string> lines;
  size_t returned = quarter;
  for (; lines.empty() && returned < 4 * quarter; ++returned) {
    let_one_return();
    lines = take_log_lines();
  }
  ASSERT_THAT(lines, testing::SizeIs(1));
  EXPECT_NEAR(static_cast<double>(returned), 2.0 * static_cast<double>(quarter),
              0.2 * static_cast<double>(quarter));

  // Indications are queued again from here, and the gap is in one place.
  size_t dropped = parse(lines[0]).dropped;
  uint32_t next = sent_;
  indicate(10);
  expect_all_but(dropped);
  EXPECT_EQ(turnstile_.seen.numbers[next - dropped - 1], next - dropped - 1);
  EXPECT_EQ(turnstile_.seen.numbers[next - dropped], next);
  EXPECT_THAT(take_log_lines(), IsEmpty());
}

TEST_P(Overflow, IsLoggedOnceForEachBurst) {
  open(std::to_string(kBound));
  size_t dropped = 0;
  for (int burst = 0; burst < 3; ++burst) {
    turnstile_.shut();
    overflow();
    turnstile_.open();
    dropped += next_report().dropped;
    expect_all_but(dropped);
  }
  EXPECT_THAT(take_log_lines(), IsEmpty());
}

TEST_P(Overflow, IsLoggedByTheReleaseWhenNothingElseEndsIt) {
  open(std::to_string(kBound));
  overflow();
  std::thread releaser([this] { EXPECT_EQ(qmi_client_release(client_), QMI_NO_ERR); });
  EXPECT_GT(next_report().dropped, kBound / kSize / 2);
  turnstile_.open();
  releaser.join();
  client_ = nullptr;
  EXPECT_EQ(turnstile_.seen.count(), 1u);
  EXPECT_THAT(take_log_lines(), IsEmpty());
}

class DefaultBound : public Overflow {
 protected:
  // Sends a little more than 64 MiB.
  void expect_64_mib() {
    constexpr size_t kLarge = 60000;
    constexpr size_t kMax = kDefaultBound / kLarge;
    indicate(kMax + 50, kLarge);
    turnstile_.open();
    Report report = next_report();
    EXPECT_EQ(report.bound, kDefaultBound);
    EXPECT_GT(report.queued, kDefaultBound - 2 * kLarge);
    expect_all_but(report.dropped);
  }
};

TEST_P(DefaultBound, Is64MiB) {
  open(std::nullopt);
  EXPECT_THAT(take_log_lines(), IsEmpty());
  expect_64_mib();
}

TEST_P(DefaultBound, ReplacesAnInvalidOne) {
  open("64M");
  EXPECT_THAT(take_log_lines(),
              ElementsAre("qmi_cci: QOREXT_INDICATION_QUEUE: 64M is not a number of bytes from "
                          "131072 on; 67108864 is taken"));
  expect_64_mib();
}

TEST_P(Overflow, AcceptsBoundsFrom128KiB) {
  for (const char* bound : {"", "0", "-1", "1e6", "131071", " 131072", "99999999999999999999"}) {
    open(bound);
    EXPECT_THAT(take_log_lines(), testing::SizeIs(1)) << bound;
    release();
  }
  open(std::to_string(kMinBound));
  EXPECT_THAT(take_log_lines(), IsEmpty());
}

TEST_P(Overflow, DoesNotAffectTheLargestIndicationsAtTheSmallestBound) {
  open(std::to_string(kMinBound));
  turnstile_.open();
  size_t largest = GetParam() == TransportKind::qrtr ? 65535 : qmi_transport::kMaxPacketSize;
  for (size_t i = 1; i <= 20; ++i) {
    indicate(1, largest);
    EXPECT_TRUE(eventually([&] { return turnstile_.seen.count() == i; }));
  }
  EXPECT_THAT(take_log_lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Over, Overflow, every_transport(), kind_name);
INSTANTIATE_TEST_SUITE_P(Over, DefaultBound, every_transport(), kind_name);

}  // namespace
}  // namespace client_test
