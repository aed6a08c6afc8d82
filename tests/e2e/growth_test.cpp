// SPDX-License-Identifier: Apache-2.0
// Repeated faults must not leak memory, descriptors or threads in the daemon.
#include <chrono>
#include <utility>

#include "tests/e2e/support/faulty_handset.h"

namespace e2e {
namespace {

class Growth;

// In KiB: two pages that are first used late, and the space of queued messages, whose number
// varies.
constexpr size_t kMaxGrowth = 8;
constexpr size_t kMaxQueued = 256;

struct RepeatedFault {
  const char* name;
  int times;
  void (*begin)(Growth& test);  // once
  void (*inject)(Growth& test);
  size_t max_growth = kMaxGrowth;
};

std::ostream& operator<<(std::ostream& out, const RepeatedFault& fault) {
  return out << fault.name;
}

class Growth : public FaultyHandset, public testing::WithParamInterface<RepeatedFault> {
 public:
  using FaultyHandset::band_query;
  using FaultyHandset::exhaust_descriptors;
  using FaultyHandset::handset;
  using FaultyHandset::pid;
  using FaultyHandset::switches;

  void serve() { handset.serve(band_query); }
  void serve_with(const std::string& fault) {
    handset.inject("read_band", fault);
    serve();
  }
  // For messages whose pipe is closed.
  void wait_for_failed_write(const std::string& indication) {
    size_t before = handset.log().size();
    handset.indicate(indication);
    EXPECT_TRUE(handset.log().wait_for("Write to parent failed 32", before));
  }
  void fill_unsolicited_pipe() {
    constexpr size_t kMessages = 150;
    handset.indicate(fmt::format("utils type=3 data={} --count {}", as_hex(zeros(500)), kMessages));
    serve();
    EXPECT_EQ(handset.messages_until_idle().size(), kMessages);
  }
  void fail_allocation(Threads threads) {
    switches->failing_threads = threads;
    switches->failing_allocation = 1;
    threads == Threads::main ? serve() : handset.indicate("notify");
    EXPECT_TRUE(wait_until([this] { return switches->failing_allocation == 0; }));
    handset.messages_until_idle();
  }
  // The saving thread ends after its report to the modem.
  void save_block() {
    size_t threads = figures_of(pid()).threads;
    size_t before = handset.log().size();
    handset.indicate("hob_save");
    EXPECT_TRUE(handset.log().wait_for("dhob_write: Sending DYNHOB request to BP", before));
    wait_until([&] { return figures_of(pid()).threads <= threads; });
  }
  // Just after the start one thread more may be seen, which then ends.
  void wait_for_steady_threads() {
    constexpr std::chrono::milliseconds kSteady{100};
    size_t last = 0;
    auto since = std::chrono::steady_clock::now();
    EXPECT_TRUE(wait_until([&] {
      auto now = std::chrono::steady_clock::now();
      size_t threads = figures_of(pid()).threads;
      if (threads != std::exchange(last, threads)) since = now;
      return now - since >= kSteady;
    }));
  }
  void store_package() {
    upload_package(7);
    handset.messages_until_idle();
  }
};

void nothing(Growth&) {}

constexpr int kManyTimes = 500;  // reveals a leak of the smallest allocation
constexpr int kFewTimes = 50;    // of slow faults, which would leak more

constexpr RepeatedFault kRepeated[] = {
    {"Refusals", kManyTimes, nothing, [](Growth& test) { test.serve_with("error"); }},
    {"TruncatedAnswers", kManyTimes, nothing,
     [](Growth& test) { test.serve_with("truncated bytes=5"); }},
    {"MalformedAnswers", kManyTimes, nothing, [](Growth& test) { test.serve_with("malformed"); }},
    {"RandomAnswers", kManyTimes, nothing, [](Growth& test) { test.serve_with("garbage"); }},
    {"DoubleAnswers", kManyTimes, nothing, [](Growth& test) { test.serve_with("duplicate"); }},
    {"StrayAnswers", kManyTimes, nothing, [](Growth& test) { test.serve_with("stray"); }},
    {"ADeadModem", kManyTimes, [](Growth& test) { test.handset.kill_modem(); },
     [](Growth& test) { test.serve(); }},
    {"AGoneService", kManyTimes, nothing,
     [](Growth& test) {
       test.handset.modem().command("service qorext down");
       test.serve();
       test.handset.modem().command("service qorext up");
     }},
    {"AClosedReplyPipe", kManyTimes,
     [](Growth& test) {
       test.handset.daemon().replies() = qorextctl::FramePipe(qorextctl::UniqueFd());
     },
     [](Growth& test) { test.serve(); }},
    {"AClosedUnsolicitedPipe", kManyTimes,
     [](Growth& test) {
       test.handset.daemon().unsolicited() = qorextctl::FramePipe(qorextctl::UniqueFd());
     },
     [](Growth& test) { test.wait_for_failed_write("notify"); }},
    {"AFullUnsolicitedPipe", kFewTimes, nothing, [](Growth& test) { test.fill_unsolicited_pipe(); },
     kMaxQueued},
    {"RepliesWithoutMemory", kManyTimes, nothing,
     [](Growth& test) { test.fail_allocation(Threads::main); }},
    {"MessagesWithoutMemory", kManyTimes, nothing,
     [](Growth& test) { test.fail_allocation(Threads::others); }},
    {"ShortWrites", kManyTimes, [](Growth& test) { test.switches->max_written = 3; },
     [](Growth& test) { test.serve(); }},
    {"FailedReads", kManyTimes, [](Growth& test) { test.switches->read_error = EINTR; },
     [](Growth& test) {
       test.switches->failing_reads = 1;
       test.handset.send(test.band_query);
       test.handset.served();
       test.handset.served();
     }},
    {"AReadOnlyFileSystem", kManyTimes, [](Growth& test) { test.switches->file_error = EROFS; },
     [](Growth& test) { test.store_package(); }},
    {"NoDescriptors", kManyTimes,
     [](Growth& test) {
       test.store_package();
       test.exhaust_descriptors(true);
     },
     [](Growth& test) { test.store_package(); }},
    {"BlocksThatCannotBeSaved", kFewTimes, nothing, [](Growth& test) { test.save_block(); }},
    {"UnknownRequests", kManyTimes, nothing,
     [](Growth& test) { test.handset.serve(hex("FFFFFFFFFFFFFFFFFF")); }},
};

constexpr int kWarmUps = 10;

TEST_P(Growth, IsNone) {
  const RepeatedFault& fault = GetParam();
  fault.begin(*this);
  for (int i = 0; i < kWarmUps; ++i) fault.inject(*this);
  wait_for_steady_threads();
  ProcessFigures before = figures_of(pid());
  for (int i = 0; i < fault.times; ++i) fault.inject(*this);
  ProcessFigures after = figures_of(pid());
  EXPECT_LE(after.anonymous, before.anonymous + fault.max_growth);
  EXPECT_EQ(after.descriptors, before.descriptors);
  EXPECT_EQ(after.threads, before.threads);
  exhaust_descriptors(false);
}

INSTANTIATE_TEST_SUITE_P(Of, Growth, testing::ValuesIn(kRepeated),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace e2e
