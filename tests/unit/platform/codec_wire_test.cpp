// SPDX-License-Identifier: Apache-2.0
// The published encodings of NAS and DMS messages, byte for byte.
#include "tests/unit/platform/codec_support.h"

namespace codec_test {
namespace {

using qmi_idl::Direction;

Bytes decoded(const qmi_idl::Message& message, const Bytes& wire) {
  Bytes structure(message.size, 0xEE);
  EXPECT_TRUE(qmi_idl::decode(message, wire, structure));
  return structure;
}

TEST(NasWire, ServingSystemResponse) {
  const Bytes wire = {0x02, 4, 0, 0,    0,    0, 0,                     // result
                      0x01, 7, 0, 1,    2,    1, 2, 2, 8,   0xFF,       // serving system
                      0x12, 8, 0, 0x36, 0x01, 4, 1, 3, 'N', 'e',  't',  // current PLMN
                      0x1D, 4, 0, 0x78, 0x56, 4, 3};                    // cell id
  const auto& message = message_of(nas(), Direction::response, 0x24);
  Bytes structure = decoded(message, wire);
  EXPECT_EQ(get(structure, 0, 4), 0u);
  EXPECT_EQ(get(structure, 8, 4), 1u);
  EXPECT_EQ(get(structure, 12, 4), 2u);
  EXPECT_EQ(get(structure, 16, 4), 1u);
  EXPECT_EQ(get(structure, 20, 4), 2u);
  EXPECT_EQ(get(structure, 24, 4), 2u);
  EXPECT_EQ(get(structure, 28, 4), 8u);
  EXPECT_EQ(get(structure, 32, 4), 0xFFFFFFFFu);
  EXPECT_EQ(structure[1104], 1);
  EXPECT_EQ(get(structure, 1106, 2), 310u);
  EXPECT_EQ(get(structure, 1108, 2), 260u);
  EXPECT_STREQ(reinterpret_cast<const char*>(&structure[1110]), "Net");
  EXPECT_EQ(structure[1434], 1);
  EXPECT_EQ(get(structure, 1436, 4), 0x03045678u);
  EXPECT_EQ(encoded(message, structure), wire);
}

TEST(NasWire, SignalInformationResponse) {
  const Bytes wire = {0x02, 4, 0, 0,    0,    0,    0,                  // result
                      0x14, 6, 0, 0xC4, 0xF5, 0xA1, 0xFF, 0x7B, 0x00};  // LTE
  const auto& message = message_of(nas(), Direction::response, 0x4F);
  Bytes structure = decoded(message, wire);
  EXPECT_EQ(structure[36], 1);
  EXPECT_EQ(static_cast<int8_t>(structure[38]), -60);
  EXPECT_EQ(static_cast<int8_t>(structure[39]), -11);
  EXPECT_EQ(static_cast<int16_t>(get(structure, 40, 2)), -95);
  EXPECT_EQ(get(structure, 42, 2), 123u);
  EXPECT_EQ(encoded(message, structure), wire);
}

TEST(NasWire, TxRxInformationRequest) {
  const auto& message = message_of(nas(), Direction::request, 0x5A);
  Bytes structure(message.size);
  put(structure, 0, 8, 4);
  EXPECT_EQ(encoded(message, structure), (Bytes{0x01, 1, 0, 8}));
}

TEST(NasWire, TxRxInformationResponse) {
  const Bytes wire = {0x02, 4,    0,    0,    0, 0, 0,  // result
                      0x10, 21,   0,    1,              // RX chain 0
                      0x9C, 0xFF, 0xFF, 0xFF, 2, 0, 0,    0,  3, 0, 0,    0,    4,    0,
                      0,    0,    5,    0,    0, 0, 0x11, 21, 0, 0,  // RX chain 1
                      6,    0,    0,    0,    7, 0, 0,    0,  8, 0, 0,    0,    9,    0,
                      0,    0,    10,   0,    0, 0, 0x12, 5,  0, 1, 0xF6, 0xFF, 0xFF, 0xFF};  // TX
  const auto& message = message_of(nas(), Direction::response, 0x5A);
  Bytes structure = decoded(message, wire);
  EXPECT_EQ(structure[8], 1);
  EXPECT_EQ(structure[12], 1);
  EXPECT_EQ(static_cast<int32_t>(get(structure, 16, 4)), -100);
  EXPECT_EQ(get(structure, 32, 4), 5u);
  EXPECT_EQ(structure[36], 1);
  EXPECT_EQ(structure[40], 0);
  EXPECT_EQ(get(structure, 44, 4), 6u);
  EXPECT_EQ(get(structure, 60, 4), 10u);
  EXPECT_EQ(structure[64], 1);
  EXPECT_EQ(structure[68], 1);
  EXPECT_EQ(static_cast<int32_t>(get(structure, 72, 4)), -10);
  EXPECT_EQ(encoded(message, structure), wire);
}

TEST(NasWire, PlmnNameRequest) {
  const auto& message = message_of(nas(), Direction::request, 0x44);
  Bytes structure(message.size);
  put(structure, 0, 310, 2);
  put(structure, 2, 260, 2);
  structure[4] = structure[5] = 1;
  structure[10] = 1;
  EXPECT_EQ(encoded(message, structure),
            (Bytes{0x01, 4, 0, 0x36, 0x01, 4, 1, 0x10, 1, 0, 1, 0x13, 1, 0, 0}));
}

TEST(NasWire, PlmnNameResponse) {
  const Bytes wire = {0x02, 4,  0,   0,   0,   0,   0,    // result
                      0x10, 16, 0,                        // names
                      1,    2,  'S', 'P',                 // SPN
                      1,    1,  2,   3,   'A', 'b', 'c',  // short name
                      1,    0,  7,   1,   'L'};           // long name
  const auto& message = message_of(nas(), Direction::response, 0x44);
  Bytes structure = decoded(message, wire);
  EXPECT_EQ(structure[8], 1);
  EXPECT_EQ(get(structure, 16, 4), 2u);
  EXPECT_EQ(structure[20], 'S');
  EXPECT_EQ(get(structure, 36, 4), 1u);
  EXPECT_EQ(get(structure, 40, 4), 1u);
  EXPECT_EQ(get(structure, 44, 4), 2u);
  EXPECT_EQ(get(structure, 48, 4), 3u);
  EXPECT_EQ(memcmp(&structure[52], "Abc", 4), 0);
  EXPECT_EQ(get(structure, 128, 4), 1u);
  EXPECT_EQ(structure[132], 'L');
  EXPECT_EQ(encoded(message, structure), wire);
}

TEST(DmsWire, WriteSpcRequest) {
  const auto& message = message_of(dms(), Direction::request, 0x52);
  Bytes structure(message.size);
  memcpy(structure.data(), "000000123456", 12);
  EXPECT_EQ(encoded(message, structure), (Bytes{0x01, 6, 0, '0', '0', '0', '0', '0', '0',  //
                                                0x02, 6, 0, '1', '2', '3', '4', '5', '6'}));
}

TEST(DmsWire, WriteSpcResponse) {
  const auto& message = message_of(dms(), Direction::response, 0x52);
  Bytes structure = decoded(message, {0x02, 4, 0, 1, 0, 12, 0});
  EXPECT_EQ(get(structure, 0, 4), 1u);
  EXPECT_EQ(get(structure, 4, 4), 12u);
}

}  // namespace
}  // namespace codec_test
