// SPDX-License-Identifier: Apache-2.0
#include "protocol/cdma_digits.h"

namespace protocol {
namespace {

constexpr uint32_t kFirstGroupShift = 14;
constexpr uint32_t kSingleDigitShift = 10;
constexpr uint32_t kSingleDigitMask = 0x0F;
constexpr uint32_t kGroupMask = 0x3FF;

}  // namespace

uint8_t encode_digit(char digit) {
  return digit == '0' ? kZeroDigit : static_cast<uint8_t>(digit - '0');
}

char decode_digit(uint32_t value) {
  return value == kZeroDigit ? '0' : static_cast<char>('0' + value % 10);
}

uint32_t encode_digits(std::string_view digits) {
  uint32_t value = 0;
  uint32_t bias = 0;
  for (char digit : digits) {
    value = 10 * value + encode_digit(digit);
    bias = 10 * bias + 1;
  }
  return value - bias;
}

std::string decode_digits(uint32_t value, size_t count) {
  std::string digits(count, '0');
  for (size_t i = count; i > 0; --i) {
    digits[i - 1] = decode_digit(value % 10 + 1);
    value /= 10;
  }
  return digits;
}

uint32_t encode_seven_digits(std::string_view digits) {
  return encode_digits(digits.substr(0, 3)) << kFirstGroupShift |
         uint32_t{encode_digit(digits[3])} << kSingleDigitShift |
         encode_digits(digits.substr(4, 3));
}

std::string decode_seven_digits(uint32_t value) {
  return decode_digits(value >> kFirstGroupShift & kGroupMask, 3) +
         decode_digit(value >> kSingleDigitShift & kSingleDigitMask) +
         decode_digits(value & kGroupMask, 3);
}

}  // namespace protocol
