// SPDX-License-Identifier: Apache-2.0
// The error messages for wrong commands.
#include <gtest/gtest.h>

#include "tools/qorextctl/frames/arguments.h"
#include "tools/qorextctl/session/session.h"

namespace qorextctl {
namespace {

struct Refusal {
  const char* line;
  const char* message;
};

// clang-format off
constexpr Refusal kRefusals[] = {
    {"nv-raed rde-id=1", "unknown request 'nv-raed'; did you mean 'nv-read'? (see: qorextctl list)"},
    {"frobnicate", "unknown request 'frobnicate' (see: qorextctl list)"},
    {"nv-read", "nv-read: rde-id (element number) is missing (see: qorextctl list nv-read)"},
    {"check-spc 246810", "check-spc: '***' is not key=value (see: qorextctl list check-spc)"},
    {"nv-read 28", "nv-read: '28' is not key=value (see: qorextctl list nv-read)"},
    {"nv-read item=28", "nv-read: no argument 'item' (see: qorextctl list nv-read)"},
    {"nv-read rde-id=1 rde_id=2", "nv-read: rde-id is given twice (see: qorextctl list nv-read)"},
    {"nv-read rde-id=", "nv-read: rde-id: '' is not a number (see: qorextctl list nv-read)"},
    {"nv-read rde-id=12a", "nv-read: rde-id: '12a' is not a number (see: qorextctl list nv-read)"},
    {"nv-read rde-id=0x", "nv-read: rde-id: '0x' is not a number (see: qorextctl list nv-read)"},
    {"nv-read rde-id=4294967296", "nv-read: rde-id: '4294967296' is not a number (see: qorextctl list nv-read)"},
    {"nv-read rde-id=-1", "nv-read: rde-id: -1 is out of range (0 to 4294967295) (see: qorextctl list nv-read)"},
    {"set-ddtm ddtm=256", "set-ddtm: ddtm: 256 is out of range (0 to 255) (see: qorextctl list set-ddtm)"},
    {"update-tot count=65536 entries=", "update-tot: count: 65536 is out of range (0 to 65535) (see: qorextctl list update-tot)"},
    {"set-bc10 status=2147483648", "set-bc10: status: 2147483648 is out of range (-2147483648 to 2147483647) (see: qorextctl list set-bc10)"},
    {"operator-name mcc=1000 mnc=1", "operator-name: mcc: 1000 is out of range (0 to 999) (see: qorextctl list operator-name)"},
    {"generic id=0x1000000", "generic: id: 0x1000000 is out of range (0 to 16777215) (see: qorextctl list generic)"},
    {"nv-write rde-id=1 data=012", "nv-write: data: '***' is not hex (pairs of digits) (see: qorextctl list nv-write)"},
    {"check-spc code=12345", "check-spc: code: 5 characters given, 6 characters expected (see: qorextctl list check-spc)"},
    {"check-spc code=1234567", "check-spc: code: 7 characters given, 6 characters expected (see: qorextctl list check-spc)"},
    {"check-spc code=12345\xC3", "check-spc: code: a code has six ASCII characters (see: qorextctl list check-spc)"},
    {"set-nam spc=000000 min=555", "set-nam: min: 3 digits given, 10 digits expected (see: qorextctl list set-nam)"},
    {"set-nam spc=000000 mdn=1234567890123456", "set-nam: mdn: 16 digits given, 0 to 15 digits expected (see: qorextctl list set-nam)"},
    {"set-nam spc=000000 mdn=555a", "set-nam: mdn: '***' has characters that are not digits (see: qorextctl list set-nam)"},
    {"set-nam mdn=555", "set-nam: spc (current service programming code) is missing (see: qorextctl list set-nam)"},
    {"set-nam spc=000000 json=/nowhere/nam.json", "set-nam: cannot read '/nowhere/nam.json' (see: qorextctl list set-nam)"},
    {"set-nam spc=000000 json=-", "set-nam: standard input holds the session, name a file (see: qorextctl list set-nam)"},
    {"write-akey spc=000000 akey=123", "write-akey: akey: 3 characters given, 26 characters expected (see: qorextctl list write-akey)"},
    {"set-sid-nid pairs=", "set-sid-nid: pairs: 0 values given, 1 to 20 values expected (see: qorextctl list set-sid-nid)"},
    {"set-sid-nid pairs=1", "set-sid-nid: pairs: '1' is not a pair such as 4139/1 (see: qorextctl list set-sid-nid)"},
    {"set-sid-nid pairs=1/2/3", "set-sid-nid: pairs: '1/2/3' is not a pair such as 4139/1 (see: qorextctl list set-sid-nid)"},
    {"set-sid-nid pairs=1/2,", "set-sid-nid: pairs: '' is not a pair such as 4139/1 (see: qorextctl list set-sid-nid)"},
    {"update-tot entries=1,x", "update-tot: entries: 'x' is not a number (see: qorextctl list update-tot)"},
    {"update-tot entries=-1", "update-tot: entries: '-1' is not a number (see: qorextctl list update-tot)"},
    {"update-tot entries=1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16", "update-tot: entries: 16 values given, 0 to 15 values expected (see: qorextctl list update-tot)"},
};
// clang-format on

TEST(Refusals, AWrongCommandHasAnErrorMessage) {
  for (const Refusal& test : kRefusals) {
    auto command = parse_command(*split_line(test.line), false);
    ASSERT_FALSE(command) << test.line;
    EXPECT_EQ(command.error().message, test.message);
    EXPECT_EQ(command.error().outcome, Outcome::usage);
  }
}

TEST(Refusals, TooMuchUtilityDataIsRefused) {
  auto command = parse_command(
      std::vector<std::string>{"utils", "type=1", "data=" + std::string(514, '0')}, false);
  ASSERT_FALSE(command);
  EXPECT_EQ(command.error().message,
            "utils: data: 257 bytes given, 0 to 256 bytes expected (see: qorextctl list utils)");
}

TEST(Refusals, AnEmptyCommandIsRefused) {
  auto command = parse_command({}, false);
  ASSERT_FALSE(command);
  EXPECT_EQ(command.error().message, "no request given (see: qorextctl list)");
}

TEST(Refusals, RawBytesMustBeHexOfALimitedSize) {
  using Words = std::vector<std::string>;
  EXPECT_EQ(parse_raw(Words{"xyz"}).error().message,
            "raw: the words are not hex (pairs of digits)");
  EXPECT_EQ(parse_raw(Words{"01 0"}).error().message,
            "raw: the words are not hex (pairs of digits)");
  EXPECT_EQ(parse_raw(Words{}).error().message, "raw: no bytes given");
  EXPECT_EQ(parse_raw(Words{std::string(2U * 17409, '0')}).error().message,
            "raw: the request has 17409 bytes, the daemon takes at most 17408");
}

TEST(Refusals, RawBytesMayBeSeveralWords) {
  auto bytes = parse_raw(std::vector<std::string>{"0102", "03 04"});
  ASSERT_TRUE(bytes);
  EXPECT_EQ(*bytes, (Bytes{1, 2, 3, 4}));
}

}  // namespace
}  // namespace qorextctl
