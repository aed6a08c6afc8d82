// SPDX-License-Identifier: Apache-2.0
// All generic-hook features: a row of the dispatch table, one exchange with the modem, one reply.
// Behaviour of a single feature is tested in its own file.
#include "tests/unit/product/serving_phone.h"

using testing::Contains;
using testing::ElementsAre;

namespace generic_features_test {

const Bytes kPayload = {1, 2, 3, 0};

struct Feature {
  const char* name;
  uint32_t id;
  const char* service;
  unsigned int message;
  Bytes request;  // for kPayload
  unsigned int response_length;
  Bytes data;  // of the reply to a response that is all zero

  friend std::ostream& operator<<(std::ostream& out, const Feature& feature) {
    return out << feature.name;
  }
};

Bytes filled(size_t size, Bytes bytes) {
  bytes.resize(size);
  return bytes;
}

Bytes utility(uint32_t type, const Bytes& data) {
  return filled(264, le32(type) + le32(static_cast<uint32_t>(data.size())) + data);
}

const Bytes kNameRequest = from_hex("0102 0300 01 01 0000 0000 01 01");

const Feature kFeatures[] = {
    {"SilentReboot", 0x50019, "vendor", 0xF, utility(3, {}), 520, {}},
    {"SysInfoFilter", 0x5001E, "vendor", 0xF, utility(5, {1}), 520, {0}},
    {"Coverage", 0x50020, "vendor", 0xF, utility(6, Bytes{0} + kPayload), 520, {0}},
    {"CoverageMode", 0x50029, "vendor", 0xF, utility(6, Bytes{1} + kPayload), 520, {0}},
    {"Tuning", 0x5002A, "vendor", 0x110, filled(32, le32(4) + kPayload), 32, {}},
    {"CallEndRadio", 0x50505, "vendor", 0xF, utility(7, {1}), 520, Bytes(17)},
    {"OperatorName", 0xA0006, "nas", 0x44, filled(32, kNameRequest), 3944, {5}},
    {"DataPlmn", 0x60001, "vendor", 0x16, Bytes(4), 568, Bytes(568)},
};

// Data PLMN is the only reply without a header.
bool has_header(const Feature& feature) { return feature.id != 0x60001; }

class GenericFeatures : public ServingPhone, public testing::WithParamInterface<Feature> {
 protected:
  static std::string frame(const Bytes& data) {
    return has_header(GetParam()) ? generic_answer(GetParam().id, data) : hex(data);
  }
  static std::string sent_line() {
    return std::string("send ") + GetParam().service + " " + log_hex(GetParam().message);
  }
};

INSTANTIATE_TEST_SUITE_P(All, GenericFeatures, testing::ValuesIn(kFeatures),
                         [](const auto& row) { return row.param.name; });

TEST_P(GenericFeatures, RequestIsSentToTheModemAndGetsItsReply) {
  ask(Request::generic(GetParam().id, kPayload));
  EXPECT_THAT(trace, Contains(sent_line()).Times(1));
  EXPECT_THAT(replies(), ElementsAre(frame(GetParam().data)));
  EXPECT_EQ(sent().request, GetParam().request);
  EXPECT_EQ(sent().response_length, GetParam().response_length);
  EXPECT_EQ(sent().timeout_ms, 15000u);
}

TEST_P(GenericFeatures, FailedSendGetsStatusFive) {
  Bytes failure = has_header(GetParam()) ? Bytes{5} : Bytes(568);
  for (int rc : {-1, -3, 1}) {
    fail_send(GetParam().message, rc);
    answer(GetParam().message, Bytes(GetParam().response_length, 0x01));
    ask(Request::generic(GetParam().id, kPayload));
    EXPECT_THAT(replies(), ElementsAre(frame(failure))) << rc;
  }
}

TEST_P(GenericFeatures, ReplyWithoutMemoryIsLost) {
  allocations_left = 0;
  ask(Request::generic(GetParam().id, kPayload));
  EXPECT_EQ(exchanges.size(), 1u);
  EXPECT_EQ(replies().empty(), has_header(GetParam()));
}

TEST_P(GenericFeatures, ReplyThatCannotBeWrittenIsLost) {
  write_errnos = {EPIPE};
  ask(Request::generic(GetParam().id, kPayload));
  EXPECT_THAT(logs(), Contains("Write to parent failed 32").Times(1));
}

TEST_P(GenericFeatures, ReplyHasTheTypeOfTheRequest) {
  for (uint8_t type : Bytes{0, 2}) {
    ask(Request::generic(GetParam().id, kPayload, type));
    std::string expected = frame(GetParam().data);
    if (has_header(GetParam())) expected.replace(0, 2, hex({{type}}));
    EXPECT_THAT(replies(), ElementsAre(expected));
  }
}

}  // namespace generic_features_test
