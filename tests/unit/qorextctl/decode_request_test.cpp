// SPDX-License-Identifier: Apache-2.0
// Requests are decoded by the rows that build them.
#include <gtest/gtest.h>

#include "tests/unit/qorextctl/frame_samples.h"
#include "tests/unit/qorextctl/request_samples.h"
#include "tools/qorextctl/base/text.h"
#include "tools/qorextctl/frames/decode.h"

namespace qorextctl {
namespace {

std::string argument_text(const Json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (!value.is_array()) return value.dump();
  std::string text;
  for (const Json& element : value) text += (text.empty() ? "" : ",") + argument_text(element);
  return text;
}

// The words that would build the request again.
std::vector<std::string> words_of(const DecodedFrame& request) {
  std::vector<std::string> words{request.name};
  for (const Item& item : request.fields) {
    words.push_back(item.name + "=" + argument_text(item.value));
  }
  return words;
}

Json value_of(const DecodedFrame& decoded, const std::string& name) {
  for (const Item& item : decoded.fields) {
    if (item.name == name) return item.value;
  }
  return nullptr;
}

TEST(DecodedRequest, BuildsTheSameBytesAgainFromItsFields) {
  size_t checked = 0;
  for (const std::string& line : sample_lines()) {
    Bytes bytes = built(line);
    DecodedFrame request = decode_request(bytes);
    if (line.find("generic id=") == 0 || line.find("cdma id=") == 0) continue;
    EXPECT_NE(request.name, "") << line;
    if (!request.problems.empty() || line.find("utils type=9 length=0") == 0) continue;
    auto again = parse_command(words_of(request), false);
    ASSERT_TRUE(again) << line << ": " << again.error().message;
    EXPECT_EQ(to_hex(again->bytes), to_hex(bytes)) << line;
    ++checked;
  }
  EXPECT_GT(checked, 55U);
}

TEST(DecodedRequest, AWrongLengthIsAProblem) {
  struct {
    const char* line;
    const char* problem;
  } const cases[] = {
      {"nv-write rde_id=28 length=513 data=01", "length states 513, data has room for 1"},
      {"set-roaming-list size=20000 data=AA", "size states 20000, data has room for 1"},
      {"update-tot count=16 entries=", "count states 16, entries has room for 15"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(decode_request(built(test.line)).problems, std::vector<std::string>{test.problem});
  }
}

TEST(DecodedRequest, TheRowThatFitsIsTakenOfThoseWithTheSameId) {
  EXPECT_EQ(decode_request(built("check-spc code=123456")).name, "check-spc");
  EXPECT_EQ(decode_request(built("verify-subsidy-lock code=123456")).name, "verify-subsidy-lock");
  EXPECT_EQ(decode_request(built("get-mob-p-rev")).name, "read-item-28");
}

TEST(DecodedRequest, AnUnknownIdShowsItsHeaderAndPayload) {
  DecodedFrame cdma = decode_request(built("cdma id=0x02000014 status=7 code=123456 data=0102"));
  EXPECT_EQ(cdma.name, "");
  EXPECT_EQ(cdma.id, "0x02000014");
  EXPECT_EQ(value_of(cdma, "status"), 7);
  EXPECT_EQ(value_of(cdma, "code"), "123456");
  EXPECT_EQ(value_of(cdma, "data"), "0102");
  DecodedFrame generic = decode_request(built("generic id=0x50506 type=2 data=AABB"));
  EXPECT_EQ(generic.id, "0x050506");
  EXPECT_EQ(value_of(generic, "type"), 2);
  EXPECT_EQ(value_of(generic, "data"), "AABB");
}

TEST(DecodedRequest, AnUnexpectedPayloadIsShownAndIsAProblem) {
  DecodedFrame request = decode_request(built("cdma id=0x020000B0 data=0102"));
  EXPECT_EQ(request.name, "get-bc10");
  EXPECT_EQ(value_of(request, "data"), "0102");
  EXPECT_EQ(request.problems, std::vector<std::string>{"2 bytes of data, 0 expected"});
}

TEST(DecodedRequest, AMissingOptionalArgumentIsNotAProblem) {
  DecodedFrame short_read = decode_request(built("cdma id=0x02000016 data=1C000000"));
  EXPECT_EQ(short_read.problems, std::vector<std::string>{});
  EXPECT_EQ(short_read.fields.size(), 1U);
  DecodedFrame empty = decode_request(built("cdma id=0x02000016"));
  EXPECT_EQ(empty.problems.back(), "rde-id is missing: the data ends before");
}

TEST(DecodedRequest, AHeaderOfNeitherFamilyIsAProblem) {
  for (const char* hex : {"05000001 00000000", "160000", ""}) {
    DecodedFrame request = decode_request(from_hex(hex));
    EXPECT_EQ(request.problems,
              std::vector<std::string>{"the header is of neither family of requests"});
  }
}

TEST(DecodedRequest, ARequestTruncatedAtAnyByteIsDecodedUpToItsEnd) {
  for (const std::string& line : sample_lines()) {
    Bytes bytes = built(line);
    for (size_t size = 0; size < bytes.size(); ++size) {
      Bytes cut(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size));
      EXPECT_FALSE(decode_request(cut).problems.empty()) << line << " truncated at " << size;
    }
  }
}

}  // namespace
}  // namespace qorextctl
