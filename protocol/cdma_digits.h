// SPDX-License-Identifier: Apache-2.0
// Digits as the CDMA over-the-air interface packs them (TIA/EIA-95): each has its own value, but
// for 0, whose value is 10.
#pragma once

#include <cstdint>

#include <string>
#include <string_view>

namespace protocol {

constexpr uint8_t kZeroDigit = 10;

// Two or three digits as one number: "00" is 99, "000" is 999.
uint32_t encode_digits(std::string_view digits);
std::string decode_digits(uint32_t value, size_t count);

// The seven digits after the area code as 24 bits: three digits, one digit, three digits.
uint32_t encode_seven_digits(std::string_view digits);
std::string decode_seven_digits(uint32_t value);

// One digit as a byte of the directory number: 1 to 9, and 10 for '0'.
uint8_t encode_digit(char digit);
char decode_digit(uint32_t value);

}  // namespace protocol
