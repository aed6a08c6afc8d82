// SPDX-License-Identifier: Apache-2.0
// A fault that comes again and again costs the daemon no memory, no descriptor and no thread.
#include "tests/e2e/support/faulty_handset.h"

namespace e2e {
namespace {

using qorextctl::Deadline;

class Growth;

// In KiB. Two pages, for what comes into memory late; and the room that messages take which have to
// wait, more or fewer of them each time.
constexpr size_t kMaxGrowth = 8;
constexpr size_t kRoomOfWaiting = 256;

struct Repeated {
  const char* name;
  int times;
  void (*begin)(Growth& test);  // once
  void (*provoke)(Growth& test);
  size_t most_growth = kMaxGrowth;
};

class Growth : public FaultyHandset, public testing::WithParamInterface<Repeated> {
 public:
  using FaultyHandset::band_query;
  using FaultyHandset::exhaust_descriptors;
  using FaultyHandset::handset;
  using FaultyHandset::messages_until_idle;
  using FaultyHandset::report_package;
  using FaultyHandset::switches;

  void serve() { handset->serve(band_query); }
  void serve_spoiled(const std::string& fault) {
    handset->spoil("read_band", fault);
    serve();
  }
  // For messages that nobody reads.
  void wait_for_failed_write(const std::string& indication) {
    size_t before = handset->log().texts().size();
    handset->modem().command("indicate " + indication);
    EXPECT_TRUE(
        handset->log().wait_for("Write to parent failed 32", before, Deadline::in(kPatience)));
  }
  void fill_unsolicited_pipe() {
    constexpr size_t kMessages = 150;
    handset->modem().command(
        fmt::format("indicate utils type=3 data={} --count {}", as_hex(zeros(500)), kMessages));
    serve();
    EXPECT_EQ(messages_until_idle().size(), kMessages);
  }
  void lose(Threads threads) {
    switches->failing_threads = threads;
    switches->failing_allocation = 1;
    threads == Threads::main ? serve() : handset->modem().command("indicate notify");
    auto deadline = Deadline::in(kPatience);
    while (switches->failing_allocation != 0 && !deadline.passed()) sched_yield();
    EXPECT_EQ(switches->failing_allocation, 0U);
    messages_until_idle();
  }
  // The thread that tries to save it ends when the modem has been told.
  void save_block() {
    size_t threads = figures_of(pid()).threads;
    size_t before = handset->log().texts().size();
    handset->modem().command("indicate hob_save");
    EXPECT_TRUE(handset->log().wait_for("dhob_write: Sending DYNHOB request to BP", before,
                                        Deadline::in(kPatience)));
    auto deadline = Deadline::in(kPatience);
    while (figures_of(pid()).threads > threads && !deadline.passed()) sched_yield();
  }
  void store_package() {
    report_package(7);
    messages_until_idle();
  }
};

void nothing(Growth&) {}

// So often that a leak of the smallest piece of memory shows.
constexpr int kManyTimes = 500;
constexpr int kFewTimes = 50;  // of what takes long, and would leak much

constexpr Repeated kRepeated[] = {
    {"Refusals", kManyTimes, nothing, [](Growth& test) { test.serve_spoiled("error"); }},
    {"TruncatedAnswers", kManyTimes, nothing,
     [](Growth& test) { test.serve_spoiled("truncated bytes=5"); }},
    {"MalformedAnswers", kManyTimes, nothing,
     [](Growth& test) { test.serve_spoiled("malformed"); }},
    {"RandomAnswers", kManyTimes, nothing, [](Growth& test) { test.serve_spoiled("garbage"); }},
    {"DoubleAnswers", kManyTimes, nothing, [](Growth& test) { test.serve_spoiled("duplicate"); }},
    {"StrayAnswers", kManyTimes, nothing, [](Growth& test) { test.serve_spoiled("stray"); }},
    {"ADeadModem", kManyTimes, [](Growth& test) { test.handset->kill_modem(); },
     [](Growth& test) { test.serve(); }},
    {"AGoneService", kManyTimes, nothing,
     [](Growth& test) {
       test.handset->modem().command("service qorext down");
       test.serve();
       test.handset->modem().command("service qorext up");
     }},
    {"AClosedReplyPipe", kManyTimes,
     [](Growth& test) {
       test.handset->daemon().replies() = qorextctl::FramePipe(qorextctl::UniqueFd());
     },
     [](Growth& test) { test.serve(); }},
    {"AClosedUnsolicitedPipe", kManyTimes,
     [](Growth& test) {
       test.handset->daemon().unsolicited() = qorextctl::FramePipe(qorextctl::UniqueFd());
     },
     [](Growth& test) { test.wait_for_failed_write("notify"); }},
    {"AFullUnsolicitedPipe", kFewTimes, nothing, [](Growth& test) { test.fill_unsolicited_pipe(); },
     kRoomOfWaiting},
    {"RepliesWithoutMemory", kManyTimes, nothing, [](Growth& test) { test.lose(Threads::main); }},
    {"MessagesWithoutMemory", kManyTimes, nothing,
     [](Growth& test) { test.lose(Threads::others); }},
    {"ShortWrites", kManyTimes, [](Growth& test) { test.switches->most_written = 3; },
     [](Growth& test) { test.serve(); }},
    {"FailedReads", kManyTimes, [](Growth& test) { test.switches->read_error = EINTR; },
     [](Growth& test) {
       test.switches->failing_reads = 1;
       test.handset->send(test.band_query);
       test.handset->served();
       test.handset->served();
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
     [](Growth& test) { test.handset->serve(hex("FFFFFFFFFFFFFFFFFF")); }},
};

constexpr int kWarmUps = 10;

TEST_P(Growth, IsNone) {
  const Repeated& fault = GetParam();
  fault.begin(*this);
  for (int i = 0; i < kWarmUps; ++i) fault.provoke(*this);
  ProcessFigures before = figures_of(pid());
  for (int i = 0; i < fault.times; ++i) fault.provoke(*this);
  ProcessFigures after = figures_of(pid());
  EXPECT_LE(after.anonymous, before.anonymous + fault.most_growth);
  EXPECT_EQ(after.descriptors, before.descriptors);
  EXPECT_EQ(after.threads, before.threads);
  exhaust_descriptors(false);
}

INSTANTIATE_TEST_SUITE_P(Of, Growth, testing::ValuesIn(kRepeated),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace e2e
