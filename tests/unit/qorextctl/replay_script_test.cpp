// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/replay/replay_script.h"

#include <gtest/gtest.h>

#include "tests/unit/qorextctl/qmi_samples.h"

namespace qorextctl {
namespace {

Event sent(const Bytes& packet) { return {0, MessageEvent{"qorext", 4, packet}}; }

Event parent_request() {
  return {0, FrameEvent{FrameKind::request, from_hex("07000002 00000000 00000000 000000000000")}};
}

class Script : public testing::Test {
 protected:
  ReplayScript& script(std::vector<Event> events) {
    recording_.events = std::move(events);
    return script_.emplace(recording_);
  }

  // The event that the request matches.
  std::optional<size_t> match(const Bytes& packet) {
    return script_->match(*reader_.read("qorext", 9, packet));
  }

  Recording recording_;
  std::optional<ReplayScript> script_;
  MessageReader reader_;
};

TEST_F(Script, MatchesEqualRequestsInOrder) {
  script({sent(read_request(1, 5)), sent(read_request(2, 5))});
  EXPECT_EQ(match(read_request(70, 5)), 0U);
  EXPECT_EQ(match(read_request(71, 5)), 1U);
  EXPECT_FALSE(match(read_request(72, 5)));
}

TEST_F(Script, PrefersTheSameContent) {
  script({sent(read_request(1, 5)), sent(read_request(2, 6))});
  EXPECT_EQ(match(read_request(70, 6)), 1U);
  EXPECT_FALSE(script_->is_matched(0));
  EXPECT_TRUE(script_->is_matched(1));
}

TEST_F(Script, MatchesTheSameMessageWithOtherContentInOrder) {
  script({sent(hob_request(1, 1)), sent(read_request(2, 5)), sent(read_request(3, 6))});
  EXPECT_EQ(match(read_request(70, 7)), 1U);
}

TEST_F(Script, MatchesOnlyTheSameContentAfterTheParentsNextRequest) {
  script({sent(read_request(1, 5)), parent_request(), sent(read_request(2, 6)),
          sent(hob_request(3, 1))});
  EXPECT_EQ(match(hob_request(70, 1)), 3U);
  EXPECT_EQ(match(read_request(71, 7)), 0U);
  EXPECT_FALSE(match(read_request(72, 7)));
  EXPECT_EQ(match(read_request(73, 6)), 2U);
}

TEST_F(Script, DoesNotMatchBeforeItsPosition) {
  script({sent(read_request(1, 5)), parent_request(), sent(read_request(2, 6))});
  script_->reach(1);
  EXPECT_EQ(match(read_request(70, 5)), 2U);
}

TEST_F(Script, RecognizesEarlyRequests) {
  script({sent(read_request(1, 5)), sent(hob_request(2, 1))});
  EXPECT_TRUE(script_->is_early(1));
  match(read_request(70, 5));
  EXPECT_FALSE(script_->is_early(1));
}

TEST_F(Script, AnswersWithTheReceivedTransaction) {
  script({sent(read_request(1, 5)), sent(read_response(1, 5, {6}))});
  ASSERT_EQ(script_->request_of(1), 0U);
  EXPECT_EQ(script_->answer(1, 0x1234), read_response(0x1234, 5, {6}));
}

TEST_F(Script, KeepsAWrongTransactionWrong) {
  script({sent(read_request(0x0001, 5)), sent(read_response(0x5554, 5, {6}))});
  ASSERT_EQ(script_->request_of(1), 0U);
  EXPECT_EQ(script_->answer(1, 0x0002), read_response(0x5557, 5, {6}));
}

TEST_F(Script, HasNoRequestForAResponseWithoutOne) {
  script({sent(read_response(1, 5, {6})), sent(qmi(kQmiIndication, 0, 1, {}))});
  EXPECT_FALSE(script_->request_of(0));
  EXPECT_FALSE(script_->request_of(1));
}

}  // namespace
}  // namespace qorextctl
