// SPDX-License-Identifier: Apache-2.0
#include "src/features/features.h"
#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;

namespace utility_indication_test {

constexpr unsigned int kUtilityIndication = 0x0F;
constexpr uint32_t kRfCableStatus = 7;
constexpr char kRfCableProperty[] = "ril.baseband.rfcable.status";

Bytes utility_structure(uint32_t type, uint32_t length, const Bytes& data) {
  Bytes structure = le32(type) + le32(length) + data;
  structure.resize(520);
  return structure;
}

struct Forwarded {
  uint32_t type;
  const char* type_and_id;  // as they lie on the pipe
};

constexpr Forwarded kLogUploadNotice = {0, "000B0003"};
constexpr Forwarded kFirstByteOnly = {9, "00150004"};
constexpr Forwarded kWhole[] = {
    {2, "000C0004"},
    {3, "000E0004"},
    {5, "00120004"},
    {6, "00130004"},
};
constexpr Forwarded kForwarded[] = {kLogUploadNotice, kWhole[0], kWhole[1],
                                    kWhole[2],        kWhole[3], kFirstByteOnly};

constexpr uint32_t kLengths[] = {0, 1, 2, 511, 512};
constexpr uint32_t kLengthsBeyondTheData[] = {513, 0x7FFFFFFF, 0xFFFFFFFF};

class UtilityIndication : public ServingPhone {
 protected:
  void deliver(uint32_t type, uint32_t length, const Bytes& data) {
    decode_to(kUtilityIndication, utility_structure(type, length, data));
    trace.clear();
    indicate(kUtilityIndication);
  }

  // The trace of an indication with these lines of its handler.
  static Lines handled(const Lines& lines) {
    return declined(kUtilityIndication, {"call decode 0xf"}) + lines;
  }

  // The same for an indication of `length` bytes that was forwarded as this frame.
  static Lines forwarded(const std::string& frame, size_t length) {
    return handled({"unsol: " + frame, written(frame.size() / 2, length)});
  }

  static std::string written(size_t frame_size, size_t length) {
    return "log: utils_ind_msg_v01: respsize=" + std::to_string(frame_size) +
           ", msgLen=" + std::to_string(length);
  }
};

TEST_F(UtilityIndication, DataIsForwardedWhole) {
  for (const Forwarded& row : kWhole) {
    for (uint32_t length : kLengths) {
      deliver(row.type, length, numbered(512));
      std::string frame = generic_event(row.type_and_id, numbered(length));
      EXPECT_EQ(trace, forwarded(frame, length)) << row.type;
      EXPECT_EQ(frame.size(), 2u * (length + 28));
    }
  }
}

TEST_F(UtilityIndication, LogUploadNoticePrecedesTheData) {
  for (uint32_t length : kLengths) {
    deliver(kLogUploadNotice.type, length, numbered(512));
    std::string frame = generic_event(kLogUploadNotice.type_and_id, Bytes{2} + numbered(length));
    EXPECT_EQ(trace, forwarded(frame, length));
    EXPECT_EQ(frame.size(), 2u * (length + 29));
  }
}

TEST_F(UtilityIndication, LogUploadNoticeWithoutDataIs29Bytes) {
  deliver(0, 0, {});
  EXPECT_EQ(trace,
            forwarded("01000000 08000000 000B0003 01000000 02 000000000000000000000000"_hex, 0));
}

TEST_F(UtilityIndication, TypeNineForwardsItsFirstByteForAnyLength) {
  for (uint32_t length : kLengths) {
    deliver(kFirstByteOnly.type, length, {0xAB, 0xCD});
    std::string frame = generic_event(kFirstByteOnly.type_and_id, {0xAB});
    EXPECT_EQ(trace, forwarded(frame, 1));
    EXPECT_EQ(frame.size(), 2u * 29);
  }
}

TEST_F(UtilityIndication, LengthBeyondTheDataIsCut) {
  for (uint32_t length : kLengthsBeyondTheData) {
    for (const Forwarded& row : kWhole) {
      deliver(row.type, length, numbered(512));
      EXPECT_THAT(unsolicited(), ElementsAre(generic_event(row.type_and_id, numbered(512))));
    }
    deliver(kLogUploadNotice.type, length, numbered(512));
    EXPECT_THAT(unsolicited(),
                ElementsAre(generic_event(kLogUploadNotice.type_and_id, Bytes{2} + numbered(512))));
    deliver(kFirstByteOnly.type, length, {0xAB});
    EXPECT_THAT(unsolicited(), ElementsAre(generic_event(kFirstByteOnly.type_and_id, {0xAB})));
  }
}

TEST_F(UtilityIndication, RfCableStatusBecomesAProperty) {
  for (auto [byte, status] : {std::pair{0, "0"}, {1, "1"}, {2, "1"}, {0x80, "1"}, {0xFF, "1"}}) {
    deliver(kRfCableStatus, 1, {static_cast<uint8_t>(byte), 0xEE});
    std::string setting = std::string(kRfCableProperty) + "=" + status;
    EXPECT_EQ(trace,
              handled({"call property_set " + setting,
                       std::string("log: updateRfStatus: ") + kRfCableProperty + ": " + status}));
    EXPECT_EQ(properties[kRfCableProperty], status);
  }
}

TEST_F(UtilityIndication, RfCableStatusOfAnyOtherLengthIsInvalid) {
  properties[kRfCableProperty] = "untouched";
  for (uint32_t length : {0u, 2u, 4u, 257u, 512u, 513u, 0xFFFFFFFFu}) {
    deliver(kRfCableStatus, length, {1, 1});
    EXPECT_EQ(trace, handled({"log: RF status info received is invalid",
                              std::string("log: updateRfStatus: ") + kRfCableProperty + ": "}));
  }
  EXPECT_EQ(properties[kRfCableProperty], "untouched");
}

TEST_F(UtilityIndication, UnknownTypeIsLoggedAndDropped) {
  const struct {
    uint32_t type;
    const char* number;
  } kRows[] = {
      {4, "4"},     {8, "8"},     {10, "10"},         {11, "11"},
      {256, "256"}, {512, "512"}, {0x10002, "65538"}, {0xFFFFFFFF, "-1"},
  };
  for (const auto& row : kRows) {
    deliver(row.type, 1, {1});
    EXPECT_EQ(trace, handled({std::string("log: utilsIndHndlr: unknown indication type [") +
                              row.number + "]"}));
  }
}

TEST_F(UtilityIndication, ThatCannotBeDecodedIsDropped) {
  fail_decode(kUtilityIndication, QMI_MALFORMED_ERR);
  for (uint32_t type : {0u, 2u, 7u, 9u, 10u}) {
    deliver(type, 1, {1});
    EXPECT_EQ(trace, handled({"log: uploadbplogs:failed to decode idl data"}));
  }
}

TEST_F(UtilityIndication, WithoutMemoryIsDropped) {
  allocations_left = 0;
  for (const Forwarded& row : kForwarded) {
    deliver(row.type, 1, {1});
    EXPECT_EQ(trace, handled({})) << row.type;
  }
}

TEST_F(UtilityIndication, ThatCannotBeWrittenIsLost) {
  write_errnos = {EPIPE};
  for (const Forwarded& row : kForwarded) {
    deliver(row.type, 1, {1});
    size_t size = row.type == kLogUploadNotice.type ? 30 : 29;
    EXPECT_EQ(trace, handled({"log: Write to parent failed 32", written(size, 1)})) << row.type;
  }
}

}  // namespace utility_indication_test
