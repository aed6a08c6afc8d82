// SPDX-License-Identifier: Apache-2.0
// The published encodings of NAS and DMS messages, byte for byte.
#include "tests/unit/platform/codec_support.h"

namespace codec_test {
namespace {

using qmi_idl::Direction;

// Expects the response to be decoded to these numbers, and encoded to the same bytes. Returns the
// structure.
Bytes expect_response(const qmi_idl::Service& service, uint32_t id, const Bytes& wire,
                      const std::vector<Field>& fields) {
  const auto& message = message_of(service, Direction::response, id);
  Bytes structure(message.size, 0xEE);
  EXPECT_TRUE(qmi_idl::decode(message, wire, structure));
  expect_fields(structure, fields);
  EXPECT_EQ(encoded(message, structure), wire);
  return structure;
}

// Expects a request with these numbers to be encoded to these bytes.
void expect_request(const qmi_idl::Service& service, uint32_t id, const std::vector<Field>& fields,
                    const Bytes& wire) {
  const auto& message = message_of(service, Direction::request, id);
  Bytes structure(message.size);
  for (const auto& [offset, width, value] : fields) {
    put(structure, offset, static_cast<uint64_t>(value), width);
  }
  EXPECT_EQ(encoded(message, structure), wire);
}

const char* text_at(const Bytes& structure, size_t offset) {
  return reinterpret_cast<const char*>(&structure[offset]);
}

TEST(NasWire, ServingSystemResponse) {
  const Bytes wire = {0x02, 4, 0, 0,    0,    0, 0,                     // result
                      0x01, 7, 0, 1,    2,    1, 2, 2, 8,   0xFF,       // serving system
                      0x12, 8, 0, 0x36, 0x01, 4, 1, 3, 'N', 'e',  't',  // current PLMN
                      0x1D, 4, 0, 0x78, 0x56, 4, 3};                    // cell id
  Bytes structure = expect_response(
      nas(), 0x24, wire,
      {u32_at(0, 0), u32_at(8, 1), u32_at(12, 2), u32_at(16, 1), u32_at(20, 2), u32_at(24, 2),
       u32_at(28, 8), u32_at(32, -1), u8_at(1104, 1), u16_at(1106, 310), u16_at(1108, 260),
       u8_at(1434, 1), u32_at(1436, 0x03045678)});
  EXPECT_STREQ(text_at(structure, 1110), "Net");
}

TEST(NasWire, SignalInformationResponse) {
  const Bytes wire = {0x02, 4, 0, 0,    0,    0,    0,                  // result
                      0x14, 6, 0, 0xC4, 0xF5, 0xA1, 0xFF, 0x7B, 0x00};  // LTE
  expect_response(nas(), 0x4F, wire,
                  {u8_at(36, 1), u8_at(38, -60), u8_at(39, -11), u16_at(40, -95), u16_at(42, 123)});
}

TEST(NasWire, TxRxInformationRequest) {
  expect_request(nas(), 0x5A, {u32_at(0, 8)}, {0x01, 1, 0, 8});
}

TEST(NasWire, TxRxInformationResponse) {
  const Bytes wire = {0x02, 4,    0,    0,    0, 0, 0,  // result
                      0x10, 21,   0,    1,              // RX chain 0
                      0x9C, 0xFF, 0xFF, 0xFF, 2, 0, 0,    0,  3, 0, 0,    0,    4,    0,
                      0,    0,    5,    0,    0, 0, 0x11, 21, 0, 0,  // RX chain 1
                      6,    0,    0,    0,    7, 0, 0,    0,  8, 0, 0,    0,    9,    0,
                      0,    0,    10,   0,    0, 0, 0x12, 5,  0, 1, 0xF6, 0xFF, 0xFF, 0xFF};  // TX
  expect_response(
      nas(), 0x5A, wire,
      {u8_at(8, 1), u8_at(12, 1), u32_at(16, -100), u32_at(32, 5), u8_at(36, 1), u8_at(40, 0),
       u32_at(44, 6), u32_at(60, 10), u8_at(64, 1), u8_at(68, 1), u32_at(72, -10)});
}

TEST(NasWire, PlmnNameRequest) {
  expect_request(nas(), 0x44,
                 {u16_at(0, 310), u16_at(2, 260), u8_at(4, 1), u8_at(5, 1), u8_at(10, 1)},
                 {0x01, 4, 0, 0x36, 0x01, 4, 1, 0x10, 1, 0, 1, 0x13, 1, 0, 0});
}

TEST(NasWire, PlmnNameResponse) {
  const Bytes wire = {0x02, 4,  0,   0,   0,   0,   0,    // result
                      0x10, 16, 0,                        // names
                      1,    2,  'S', 'P',                 // SPN
                      1,    1,  2,   3,   'A', 'b', 'c',  // short name
                      1,    0,  7,   1,   'L'};           // long name
  Bytes structure =
      expect_response(nas(), 0x44, wire,
                      {u8_at(8, 1), u32_at(16, 2), u8_at(20, 'S'), u32_at(36, 1), u32_at(40, 1),
                       u32_at(44, 2), u32_at(48, 3), u32_at(128, 1), u8_at(132, 'L')});
  EXPECT_STREQ(text_at(structure, 52), "Abc");
}

TEST(DmsWire, WriteSpcRequest) {
  const auto& message = message_of(dms(), Direction::request, 0x52);
  Bytes structure(message.size);
  memcpy(structure.data(), "000000123456", 12);
  EXPECT_EQ(encoded(message, structure), (Bytes{0x01, 6, 0, '0', '0', '0', '0', '0', '0',  //
                                                0x02, 6, 0, '1', '2', '3', '4', '5', '6'}));
}

TEST(DmsWire, WriteSpcResponse) {
  expect_response(dms(), 0x52, {0x02, 4, 0, 1, 0, 12, 0}, {u32_at(0, 1), u32_at(4, 12)});
}

}  // namespace
}  // namespace codec_test
