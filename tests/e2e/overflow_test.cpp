// SPDX-License-Identifier: Apache-2.0
// Indications that the daemon has to drop: the parent does not read, or there is no memory.
#include <stdlib.h>

#include "tests/e2e/support/faulty_handset.h"

namespace e2e {
namespace {

using testing::IsEmpty;

constexpr size_t kBound = 4 << 20;
// In KiB: growth besides the queue, and after the queue is empty again.
constexpr size_t kSlack = 256;

// The daemon inherits it.
struct Bound {
  Bound() { setenv("QOREXT_INDICATION_QUEUE", std::to_string(kBound).c_str(), 1); }
  Bound(const Bound&) = delete;
  Bound& operator=(const Bound&) = delete;
  ~Bound() { unsetenv("QOREXT_INDICATION_QUEUE"); }
};

class Overflow : private Bound, public FaultyHandset {
 protected:
  void indicate(size_t count) {
    handset.indicate(fmt::format("utils type=3 data={} --count {}", as_hex(data), count));
  }

  // The client library's log messages about dropped indications, with their number and cause.
  Texts reports() const {
    Texts reports;
    for (const std::string& line : handset.log().other_lines()) {
      size_t start = line.find("Dropped ");
      if (start != std::string::npos) reports.push_back(line.substr(start));
    }
    return reports;
  }

  // Reads until dropped indications have been logged and the queue is empty.
  Texts read_all() {
    Texts messages;
    while (reports().empty() && (messages.empty() || messages.back() != "nothing")) {
      messages.push_back(handset.next_message());
    }
    return messages + handset.messages_until_idle();
  }

  void expect_new_messages_arrive() {
    indicate(3);
    EXPECT_THAT(handset.messages_until_idle(), testing::ElementsAre(message, message, message));
  }

  const Bytes data = counting(500);
  const std::string message = as_hex(generic_message(hex("000E0004"), data));
};

TEST_F(Overflow, OfAParentThatDoesNotReadIsBoundedAndReported) {
  constexpr size_t kMessages = 30'000;
  size_t before = figures_of(pid()).anonymous;
  indicate(kMessages);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(handset.serve(band_query).replies, band_reply);
  size_t full = figures_of(pid()).anonymous;
  EXPECT_GT(full, before + kBound / 1024 / 2);
  EXPECT_LE(full, before + kBound / 1024 + kSlack);
  EXPECT_THAT(reports(), IsEmpty());

  auto messages = read_all();
  EXPECT_THAT(messages, testing::Each(message));
  EXPECT_THAT(reports(),
              testing::ElementsAre(testing::StartsWith(fmt::format(
                  "Dropped {} indications: the queue is full, ", kMessages - messages.size()))));
  EXPECT_LE(figures_of(pid()).anonymous, before + kSlack);

  expect_new_messages_arrive();
}

TEST_F(Overflow, IsReportedWhenTheDaemonEnds) {
  indicate(30'000);
  EXPECT_EQ(handset.serve(band_query).replies, band_reply);
  EXPECT_THAT(reports(), IsEmpty());
  handset.end_of_file();
  EXPECT_EQ(handset.exit_status(), "exit status 0");
  wait_until([this] { return !reports().empty(); });
  EXPECT_THAT(reports(), testing::ElementsAre(testing::ContainsRegex(
                             "^Dropped [1-9][0-9]+ indications: the queue is full, ")));
}

TEST_F(Overflow, ForLackOfMemoryIsReported) {
  constexpr uint32_t kMessages = 500;
  switches->failing_threads = Threads::others;
  switches->without_memory = 1;
  indicate(kMessages);
  EXPECT_TRUE(wait_until([this] { return switches->failed_allocations >= kMessages; }));
  EXPECT_EQ(switches->failed_allocations, kMessages);
  switches->without_memory = 0;
  EXPECT_EQ(handset.serve(band_query).replies, band_reply);

  expect_new_messages_arrive();
  EXPECT_THAT(reports(), testing::ElementsAre(fmt::format(
                             "Dropped {} indications: there is no memory, 0 of at most {} bytes "
                             "queued",
                             kMessages, kBound)));
}

}  // namespace
}  // namespace e2e
