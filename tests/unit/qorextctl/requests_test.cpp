// SPDX-License-Identifier: Apache-2.0
// The bytes of all requests, compared with literal ones.
#include <gtest/gtest.h>

#include <set>

#include "tests/unit/qorextctl/request_samples.h"

namespace qorextctl {
namespace requests_test {

std::string padded(const std::string& hex, size_t payload_size, size_t header_size) {
  std::string text = to_hex(*parse_hex(hex));
  text.resize(2 * (header_size + payload_size), '0');
  return text;
}

std::string hex_or_error(const std::string& line) {
  auto command = parse_command(*split_line(line), false);
  return command ? to_hex(command->bytes) : command.error().message;
}

TEST(Requests, HaveTheBytesThatTheDaemonExpects) {
  for (const RequestSample& test : kRequestSamples) {
    EXPECT_EQ(hex_or_error(test.line), to_hex(*parse_hex(test.hex))) << test.line;
  }
}

TEST(Requests, PayloadsOfFixedSizeArePaddedWithZeros) {
  for (const PaddedSample& test : kPaddedSamples) {
    EXPECT_EQ(hex_or_error(test.line), padded(test.hex, test.payload_size, 18)) << test.line;
  }
}

TEST(Requests, EachRowOfTheCatalogueHasASample) {
  std::set<std::string> names;
  for (const std::string& line : sample_lines()) names.insert(split_line(line)->front());
  for (const Request& request : catalogue()) EXPECT_TRUE(names.count(request.name)) << request.name;
  EXPECT_EQ(names.size(), catalogue().size());
}

TEST(Requests, NamesAreUniqueAndDefaultsNameExistingArguments) {
  std::set<std::string> names;
  for (const Request& request : catalogue()) {
    EXPECT_TRUE(names.insert(request.name).second) << request.name;
    std::set<std::string> arguments;
    for (const Argument& argument : request.payload.arguments) {
      EXPECT_TRUE(arguments.insert(argument.field.name).second) << argument.field.name;
    }
    for (const Argument& argument : request.payload.arguments) {
      Default otherwise = argument.otherwise;
      bool names_other =
          otherwise.kind == Default::Kind::length_of || otherwise.kind == Default::Kind::same_as;
      EXPECT_TRUE(!names_other || arguments.count(otherwise.text)) << argument.field.name;
    }
  }
}

TEST(Requests, TheLongestRequestIsBuiltAndALongerOneIsRefused) {
  std::string data(2U * (17408 - 18), '0');
  EXPECT_EQ(hex_or_error("cdma id=0x02000011 data=" + data).size(), 2u * 17408);
  EXPECT_EQ(
      hex_or_error("cdma id=0x02000011 data=00" + data),
      "cdma: the request has 17409 bytes, the daemon takes at most 17408 (see: qorextctl list "
      "cdma)");
}

}  // namespace requests_test
}  // namespace qorextctl
