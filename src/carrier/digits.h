// SPDX-License-Identifier: Apache-2.0
// The digit encodings of CDMA identities (TIA/EIA-95, 6.3.1): a group of digits is the decimal
// number of its digits less one in each place, the digit 0 counting as 10. Three digits d1 d2 d3
// become 100 d1 + 10 d2 + d3 - 111 (0 to 999), two digits 10 d1 + d2 - 11 (0 to 99). The functions
// have no state and neither need nor write a terminating NUL.
#pragma once

#include <stdint.h>

// A character that is not a digit counts as its unsigned value less that of '0'; it is not an
// error.
uint16_t encode_three_digits(const char* digits);
uint8_t encode_two_digits(const char* digits);

// Write three and two digits, without a terminator. Of a code beyond 999 or 99 the lower decimal
// places count.
void decode_three_digits(uint16_t code, char* digits);
void decode_two_digits(uint8_t code, char* digits);

// Seven digits in 24 bits (MIN1, IMSI_S1): the encoded digits 1 to 3 in bits 14 to 23, the fourth
// digit in bits 10 to 13 (0 as 10), the encoded digits 5 to 7 in bits 0 to 9.
uint32_t encode_seven_digits(const char* digits);
void decode_seven_digits(uint32_t code, char* digits);

// One digit of a directory number: 1 to 9 as they are, 0 as 10.
uint8_t encode_dial_digit(char digit);
char decode_dial_digit(uint8_t code);
