// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/operations.h"

#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;

namespace rde_test {

Bytes item(uint32_t length, const Bytes& data, uint32_t data_length) {
  return le32(0) + le32(0) + le32(77) + le32(1) + le32(2) + le32(length) + le32(data_length) + data;
}

class Rde : public ServingPhone {
 protected:
  uint32_t read(void* output, uint32_t max_length, uint32_t* length = nullptr) {
    return qor_qmi_sprint_rde_read(41, 1, 2, output, max_length, length);
  }
};

TEST_F(Rde, WriteSendsTheItem) {
  Bytes data = from_hex("0102AB");
  EXPECT_EQ(qor_qmi_sprint_rde_write(41, 1, 2, 3, data.data()), 0u);
  EXPECT_THAT(trace, ElementsAre("log: NV Write with RDE index 41, record number 1, offset 2.",
                                 "log: qor_qmi_sprint_rde_write: hexdump len 3...",
                                 "log: HexDump: Data 0102AB", "send vendor 0x9",
                                 "log: NV Write success for element 41"));
  EXPECT_EQ(exchanges[0].request,
            le32(41) + le32(1) + le32(2) + le32(3) + le32(3) + data + Bytes(509));
  EXPECT_EQ(exchanges[0].response_length, 8u);
}

TEST_F(Rde, WriteOf512BytesIsSentAndOf513Refused) {
  Bytes data(513, 0x11);
  EXPECT_EQ(qor_qmi_sprint_rde_write(41, 0, 0, 512, data.data()), 0u);
  EXPECT_EQ(exchanges.size(), 1u);
  trace.clear();
  EXPECT_EQ(qor_qmi_sprint_rde_write(41, 0, 0, 513, data.data()), 4u);
  EXPECT_THAT(trace, ElementsAre("log: NV Write with RDE index 41, record number 0, offset 0.",
                                 "log: Data more than buffer size 513"));
  EXPECT_EQ(exchanges.size(), 1u);
}

TEST_F(Rde, WriteFailsOnTheSendAndOnTheModemsResult) {
  fail_send(9, -3);
  EXPECT_EQ(qor_qmi_sprint_rde_write(41, 0, 0, 1, "x"), 4u);
  EXPECT_EQ(trace.back(), "log: NV Write fail - -3, result - 0, error - 0");
  fail_send(9, 0);
  for (uint32_t result : {1u, 2u, ~0u}) {
    answer(9, le32(result) + le32(48));
    EXPECT_EQ(qor_qmi_sprint_rde_write(41, 0, 0, 1, "x"), 4u);
    EXPECT_EQ(trace.back(), "log: NV Write fail - 0, result - " +
                                std::to_string(static_cast<int>(result)) + ", error - 48");
  }
}

TEST_F(Rde, ReadCopiesTheItemAndItsLength) {
  answer(8, item(3, from_hex("0AF1FF99"), 5));
  uint8_t output[5] = {};
  uint32_t length = 0;
  EXPECT_EQ(read(output, 5, &length), 0u);
  EXPECT_EQ(hex(output), "0AF1FF0000");
  EXPECT_EQ(length, 3u);
  EXPECT_THAT(trace, ElementsAre("log: NV Read with RDE index (41), recordNum(1), offset(2).",
                                 "send vendor 0x8",
                                 "log: NV Read 77, length 3, data length 5, grde - 0AF1FF"));
  EXPECT_EQ(exchanges[0].request, le32(41) + le32(1) + le32(2) + Bytes(520));
  EXPECT_EQ(exchanges[0].response_length, 540u);
}

TEST_F(Rde, ReadWithoutALengthPointerCopiesTheData) {
  answer(8, item(3, {1, 2, 3}, 3));
  uint8_t output[3] = {};
  EXPECT_EQ(read(output, 3), 0u);
  EXPECT_EQ(hex(output), "010203");
}

TEST_F(Rde, ItemThatDoesNotFitIsASuccessWithNothingCopied) {
  answer(8, item(6, {1, 2, 3, 4, 5, 6}, 6));
  uint8_t output[6] = {};
  uint32_t length = 99;
  EXPECT_EQ(read(output, 5, &length), 0u);
  EXPECT_EQ(hex(output), "000000000000");
  EXPECT_EQ(length, 99u);
  EXPECT_EQ(trace.back(), "log: Input buffer is NULL or too small! max_len(5).");
}

TEST_F(Rde, LengthIsComparedUnsigned) {
  answer(8, item(0xFFFFFFFF, Bytes(512, 0x5A), 512));
  uint8_t output[6] = {};
  uint32_t length = 99;
  EXPECT_EQ(read(output, 5, &length), 0u);
  EXPECT_EQ(hex(output), "000000000000");
  EXPECT_EQ(length, 99u);
  EXPECT_EQ(trace.back(), "log: Input buffer is NULL or too small! max_len(5).");
}

TEST_F(Rde, AddressesAreSentWith32Bits) {
  qor_qmi_sprint_rde_write(0x01020304, 0x05060708, -2, 0, "");
  qor_qmi_sprint_rde_read(0x01020304, 0x05060708, -2, nullptr, 0, nullptr);
  for (const Exchange& exchange : exchanges) {
    EXPECT_EQ(exchange.request, from_hex("04030201 08070605 FEFFFFFF") + Bytes(520));
  }
}

TEST_F(Rde, AddressesAreLoggedWithTheirSigns) {
  EXPECT_EQ(qor_qmi_sprint_rde_write(-1, -2, -3, 0, ""), 0u);
  EXPECT_EQ(logs().front(), "NV Write with RDE index -1, record number -2, offset -3.");
  EXPECT_EQ(logs().back(), "NV Write success for element 4294967295");
  trace.clear();
  EXPECT_EQ(qor_qmi_sprint_rde_read(-1, -2, -3, nullptr, 0, nullptr), 0u);
  EXPECT_EQ(logs().front(), "NV Read with RDE index (-1), recordNum(-2), offset(-3).");
}

TEST_F(Rde, ReadWithoutABufferIsASuccess) {
  answer(8, item(2, {1, 2}, 2));
  uint32_t length = 99;
  EXPECT_EQ(read(nullptr, 16, &length), 0u);
  EXPECT_EQ(length, 99u);
  EXPECT_EQ(trace.back(), "log: Input buffer is NULL or too small! max_len(16).");
}

TEST_F(Rde, LengthBeyondTheMessageIsCut) {
  answer(8, item(600, Bytes(512, 0x5A), 512));
  Bytes output(1024);
  uint32_t length = 0;
  EXPECT_EQ(read(output.data(), 1024, &length), 0u);
  EXPECT_EQ(length, 512u);
  EXPECT_EQ(output[511], 0x5A);
  EXPECT_EQ(output[512], 0);
  EXPECT_EQ(trace.back(),
            "log: NV Read 77, length 600, data length 512, grde - " + hex(Bytes(512, 0x5A)));
}

TEST_F(Rde, ReadFailsOnTheSendAndOnTheModemsResult) {
  uint8_t output[4] = {};
  fail_send(8, -3);
  EXPECT_EQ(read(output, 4), 4u);
  EXPECT_EQ(trace.back(), "log: NV Read fail - -3, result - 0, error - 0");
  fail_send(8, 0);
  for (uint32_t result : {1u, 2u, ~0u}) {
    answer(8, le32(result) + le32(16));
    EXPECT_EQ(read(output, 4), 4u);
    EXPECT_EQ(trace.back(), "log: NV Read fail - 0, result - " +
                                std::to_string(static_cast<int>(result)) + ", error - 16");
  }
}

}  // namespace rde_test
