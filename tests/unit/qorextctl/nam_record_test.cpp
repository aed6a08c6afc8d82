// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/frames/json_record.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/frames/item_text.h"

namespace qorextctl {
namespace {

class NamRecord : public testing::Test {
 protected:
  void write(const std::string& text) const { std::ofstream(file_) << text; }
  void TearDown() override { std::filesystem::remove(file_); }

  Result<Command> set_nam(std::vector<std::string> words) const {
    words.insert(words.begin(), {"set-nam", "json=" + file_});
    return parse_command(words, true);
  }

  std::string file_ = testing::TempDir() + "qorextctl_nam_" + std::to_string(getpid()) + ".json";
};

Bytes nam_reply() {
  auto command =
      parse_command(std::vector<std::string>{"set-nam", "spc=111111", "mdn=5551234567", "sid=4139",
                                             "imsi-t=310120123456789", "overload-class=3"},
                    false);
  Bytes reply = command->bytes;
  reply[0] = 1;                                                   // the get request's id
  std::fill(reply.begin() + 12, reply.begin() + 18, uint8_t{0});  // no code in a reply
  std::fill(reply.end() - 8, reply.end(), uint8_t{0});            // no new code either
  reply.insert(reply.end(), 2, 0);
  return reply;
}

TEST_F(NamRecord, TooManyLevelsAreRefused) {
  constexpr size_t kMany = 200'000;
  write("{\"fields\":" + std::string(kMany, '[') + std::string(kMany, ']') + "}");
  auto command = set_nam({"spc=000000"});
  ASSERT_FALSE(command);
  EXPECT_EQ(command.error().outcome, Outcome::usage);
  EXPECT_NE(command.error().message.find("the record is nested deeper than 64 levels"),
            std::string::npos);
}

TEST_F(NamRecord, AnEndlessFileIsRefused) {
  auto command = parse_command(std::vector<std::string>{"set-nam", "json=/dev/zero"}, true);
  ASSERT_FALSE(command);
  EXPECT_NE(command.error().message.find("the record is longer than 1048576 bytes"),
            std::string::npos);
}

TEST_F(NamRecord, APrintedReplyAsInputWritesTheSameRecord) {
  Bytes reply = nam_reply();
  DecodedFrame decoded = decode_reply(find_request("get-nam"), ReplyForm::cdma, 0x02000001, reply);
  ASSERT_TRUE(decoded.problems.empty());
  write(to_json(decoded).dump());

  auto command = set_nam({"spc=000000"});

  ASSERT_TRUE(command) << command.error().message;
  Bytes expected(reply.begin() + 18, reply.end() - 2);
  std::fill(expected.begin() + 96, expected.begin() + 102, uint8_t{'0'});  // the new code
  EXPECT_EQ(to_hex(part(command->bytes, 18, 104)), to_hex(expected));
}

TEST_F(NamRecord, WordsTakePrecedenceOverTheRecord) {
  write(R"({"mdn":"5551234567","sid":7})");
  auto command = set_nam({"spc=000000", "sid=8"});
  ASSERT_TRUE(command) << command.error().message;
  EXPECT_EQ(load_le(command->bytes, 18 + 32, 4), 8u);
  EXPECT_EQ(command->bytes[18], '5');
}

TEST_F(NamRecord, UnknownMembersAreRefused) {
  write(R"({"colour":"red"})");
  EXPECT_EQ(set_nam({"spc=000000"}).error().message,
            "set-nam: the record's 'colour' is not an argument (see: qorextctl list set-nam)");
}

TEST_F(NamRecord, MembersMustBeStringsOrIntegers) {
  for (const char* text : {R"({"sid":[1]})", R"({"sid":1.5})", R"({"sid":null})"}) {
    auto members = parse_record(text);
    ASSERT_FALSE(members) << text;
    EXPECT_EQ(members.error().message, "the record's 'sid': expected a string or an integer");
  }
}

TEST_F(NamRecord, OtherInputThanAJsonObjectIsRefused) {
  for (const char* text : {"", "nonsense", "[1]", R"({"fields":3})"}) {
    auto members = parse_record(text);
    ASSERT_FALSE(members) << text;
    EXPECT_EQ(members.error().message, "the record is not a JSON object");
  }
}

TEST_F(NamRecord, KeysAndValuesBecomeArguments) {
  auto members = parse_record(R"({"imsi_t":"310","sid":4139})");
  ASSERT_TRUE(members);
  EXPECT_EQ((*members)["imsi-t"], "310");
  EXPECT_EQ((*members)["sid"], "4139");
}

TEST_F(NamRecord, OnlySetNamAcceptsARecord) {
  auto command = parse_command(std::vector<std::string>{"get-nam", "json=x"}, true);
  ASSERT_FALSE(command);
  EXPECT_EQ(command.error().message, "get-nam: no argument 'json' (see: qorextctl list get-nam)");
}

}  // namespace
}  // namespace qorextctl
