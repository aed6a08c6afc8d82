// SPDX-License-Identifier: Apache-2.0
#include "src/carrier/digits.h"

namespace {

constexpr unsigned kLeadShift = 14;
constexpr unsigned kMiddleShift = 10;
constexpr uint32_t kGroupMask = 0x3FF;
constexpr uint32_t kMiddleMask = 0xF;

// Without a sign, as char has none on the phone.
int digit_value(char digit) { return digit == '0' ? 10 : static_cast<uint8_t>(digit) - '0'; }

// A decimal place of 9 represents the digit 0.
char digit_of_place(unsigned place) { return static_cast<char>('0' + (place % 10 + 1) % 10); }

}  // namespace

uint16_t encode_three_digits(const char* digits) {
  return static_cast<uint16_t>(100 * digit_value(digits[0]) + 10 * digit_value(digits[1]) +
                               digit_value(digits[2]) - 111);
}

uint8_t encode_two_digits(const char* digits) {
  return static_cast<uint8_t>(10 * digit_value(digits[0]) + digit_value(digits[1]) - 11);
}

void decode_three_digits(uint16_t code, char* digits) {
  digits[0] = digit_of_place(code / 100U);
  digits[1] = digit_of_place(code / 10U);
  digits[2] = digit_of_place(code);
}

void decode_two_digits(uint8_t code, char* digits) {
  digits[0] = digit_of_place(code / 10U);
  digits[1] = digit_of_place(code);
}

uint32_t encode_seven_digits(const char* digits) {
  uint32_t lead = encode_three_digits(digits) & kGroupMask;
  uint32_t middle = encode_dial_digit(digits[3]) & kMiddleMask;
  uint32_t tail = encode_three_digits(digits + 4) & kGroupMask;
  return lead << kLeadShift | middle << kMiddleShift | tail;
}

void decode_seven_digits(uint32_t code, char* digits) {
  decode_three_digits(static_cast<uint16_t>(code >> kLeadShift & kGroupMask), digits);
  digits[3] = decode_dial_digit(static_cast<uint8_t>(code >> kMiddleShift & kMiddleMask));
  decode_three_digits(static_cast<uint16_t>(code & kGroupMask), digits + 4);
}

uint8_t encode_dial_digit(char digit) { return static_cast<uint8_t>(digit_value(digit)); }

char decode_dial_digit(uint8_t code) { return code == 10 ? '0' : static_cast<char>('0' + code); }
