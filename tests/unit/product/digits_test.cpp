// SPDX-License-Identifier: Apache-2.0
#include "src/carrier/digits.h"

#include <gmock/gmock.h>

#include <set>
#include <string>

#include "tests/unit/product/random_digits.h"

namespace digits_test {

std::string padded(unsigned number, size_t digits) {
  std::string text = std::to_string(number);
  return std::string(digits - text.size(), '0') + text;
}

std::string three(uint16_t code) {
  std::string text(3, '?');
  decode_three_digits(code, text.data());
  return text;
}

std::string two(uint8_t code) {
  std::string text(2, '?');
  decode_two_digits(code, text.data());
  return text;
}

std::string seven(uint32_t code) {
  std::string text(7, '?');
  decode_seven_digits(code, text.data());
  return text;
}

int counted(char digit) { return digit == '0' ? 10 : digit - '0'; }

TEST(Digits, EveryGroupOfThreeIsEncodedByTheFormulaAndDecoded) {
  std::set<uint16_t> codes;
  for (unsigned number = 0; number < 1000; ++number) {
    std::string digits = padded(number, 3);
    uint16_t code = encode_three_digits(digits.data());
    EXPECT_EQ(code, 100 * counted(digits[0]) + 10 * counted(digits[1]) + counted(digits[2]) - 111);
    EXPECT_EQ(three(code), digits);
    codes.insert(code);
  }
  EXPECT_EQ(codes.size(), 1000u);
  EXPECT_EQ(*codes.rbegin(), 999);
}

TEST(Digits, EveryGroupOfTwoIsEncodedByTheFormulaAndDecoded) {
  std::set<uint8_t> codes;
  for (unsigned number = 0; number < 100; ++number) {
    std::string digits = padded(number, 2);
    uint8_t code = encode_two_digits(digits.data());
    EXPECT_EQ(code, 10 * counted(digits[0]) + counted(digits[1]) - 11);
    EXPECT_EQ(two(code), digits);
    codes.insert(code);
  }
  EXPECT_EQ(codes.size(), 100u);
  EXPECT_EQ(*codes.rbegin(), 99);
}

TEST(Digits, NamedGroups) {
  EXPECT_EQ(encode_three_digits("000"), 999);
  EXPECT_EQ(encode_three_digits("111"), 0);
  EXPECT_EQ(encode_three_digits("110"), 9);
  EXPECT_EQ(encode_three_digits("101"), 90);
  EXPECT_EQ(encode_three_digits("011"), 900);
  EXPECT_EQ(encode_three_digits("206"), 195);
  EXPECT_EQ(encode_two_digits("00"), 99);
  EXPECT_EQ(encode_two_digits("11"), 0);
  EXPECT_EQ(encode_two_digits("48"), 37);
}

TEST(Digits, OtherCharactersCountWithoutASign) {
  EXPECT_EQ(encode_three_digits("\xC3\xA9"
                                "1"),
            15800);
  EXPECT_EQ(encode_three_digits("\xFF\xFF\xFF"), 207 * 111 - 111);
  EXPECT_EQ(encode_two_digits("\x80\xFF"), (800 + 207 - 11) & 0xFF);
  EXPECT_EQ(encode_dial_digit('\xFF'), 207);
  EXPECT_EQ(encode_seven_digits("111\xFE"
                                "111"),
            (206u & 0xF) << 10);
}

TEST(Digits, NumberOfTenZerosIs999And999And10And999) {
  const std::string zeros(10, '0');
  EXPECT_EQ(encode_three_digits(zeros.data()), 999);
  uint32_t code = encode_seven_digits(zeros.data() + 3);
  EXPECT_EQ(code >> 14, 999u);
  EXPECT_EQ(code >> 10 & 0xF, 10u);
  EXPECT_EQ(code & 0x3FF, 999u);
}

TEST(Digits, SevenDigitsHaveTheirBits) {
  uint32_t code = encode_seven_digits("5551234");
  EXPECT_EQ(code, (444u << 14) | (1u << 10) | 123u);
  EXPECT_EQ(code, 7275643u);
}

TEST(Digits, TenDigitNumbersAreDecodedAgain) {
  RandomDigits random(5551234);
  for (int i = 0; i < 2000; ++i) {
    std::string number = random.digits(10);
    uint16_t area = encode_three_digits(number.data());
    uint32_t rest = encode_seven_digits(number.data() + 3);
    EXPECT_LT(rest, 1u << 24);
    EXPECT_EQ(three(area) + seven(rest), number);
  }
}

TEST(Digits, FifteenDigitNumbersAreDecodedAgain) {
  RandomDigits random(310120);
  for (int i = 0; i < 2000; ++i) {
    std::string number = random.digits(15);
    std::string back = three(encode_three_digits(number.data())) +
                       two(encode_two_digits(number.data() + 3)) +
                       three(encode_three_digits(number.data() + 5)) +
                       seven(encode_seven_digits(number.data() + 8));
    EXPECT_EQ(back, number);
  }
}

TEST(Digits, DialDigitsAreUnchangedExceptZero) {
  EXPECT_EQ(encode_dial_digit('0'), 10);
  EXPECT_EQ(decode_dial_digit(10), '0');
  for (char digit = '1'; digit <= '9'; ++digit) {
    EXPECT_EQ(encode_dial_digit(digit), digit - '0');
    EXPECT_EQ(decode_dial_digit(static_cast<uint8_t>(digit - '0')), digit);
  }
  EXPECT_EQ(decode_dial_digit(0), '0');
}

}  // namespace digits_test
