// SPDX-License-Identifier: Apache-2.0
// Hexadecimal text: the conversions of the product, the simulated modem and the tool.
#include <algorithm>
#include <memory>

#include "fuzz/phone.h"
#include "fuzz/support.h"
#include "platform/linux/qmi_json/hex.h"
#include "src/carrier/engineering_text.h"
#include "src/host/base/bytes.h"
#include "tools/qorextctl/base/bytes.h"

namespace {

using fuzz::Bytes;

constexpr size_t kMaxRecord = 512;
constexpr size_t kMaxText = 1024;

// Memory that ends with its last byte, so that an overflow is detected.
struct ExactBuffer {
  explicit ExactBuffer(size_t size) : bytes(new uint8_t[size]), size(size) {}
  std::unique_ptr<uint8_t[]> bytes;
  size_t size;
};

void check_round_trip(const Bytes& bytes) {
  ExactBuffer text(2 * bytes.size() + 1);
  toHexString(bytes.size(), bytes.data(), reinterpret_cast<char*>(text.bytes.get()));
  std::string digits(reinterpret_cast<char*>(text.bytes.get()));
  FUZZ_REQUIRE(digits.size() == 2 * bytes.size());

  ExactBuffer record(bytes.size());
  hexstr_to_bin(text.bytes.get(), digits.size(), record.bytes.get(), record.size);
  FUZZ_REQUIRE(std::equal(bytes.begin(), bytes.end(), record.bytes.get()));
  FUZZ_REQUIRE(qmi_json::from_hex(digits) == bytes);
  FUZZ_REQUIRE(qorextctl::parse_hex(digits) == bytes);
  FUZZ_REQUIRE(qorextctl::to_hex(bytes) == digits);
  FUZZ_REQUIRE(qmi_json::from_hex(qmi_json::to_hex(bytes)) == bytes);
}

// A text changes only as many bytes of the record as it has pairs of characters.
void check_any_text(const Bytes& text, size_t record_size) {
  constexpr uint8_t kUntouched = 0xA5;
  ExactBuffer record(record_size);
  std::fill_n(record.bytes.get(), record_size, kUntouched);
  hexstr_to_bin(text.data(), text.size(), record.bytes.get(), record_size);
  for (size_t i = (text.size() + 1) / 2; i < record_size; ++i) {
    FUZZ_REQUIRE(record.bytes[i] == kUntouched);
  }
  std::string characters(text.begin(), text.end());
  auto read = qmi_json::from_hex(characters);
  FUZZ_REQUIRE(!read || 2 * read->size() <= text.size());
  auto parsed = qorextctl::parse_hex(characters);
  FUZZ_REQUIRE(!parsed || 2 * parsed->size() <= text.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  fuzz::Phone phone(input);
  auto record_size = input.ConsumeIntegralInRange<size_t>(0, kMaxRecord);
  Bytes text = fuzz::consume_bytes(input, kMaxText);
  check_any_text(text, record_size);
  hexDump(text.data(), text.size());
  check_round_trip(input.ConsumeRemainingBytes<uint8_t>());
  return 0;
}
