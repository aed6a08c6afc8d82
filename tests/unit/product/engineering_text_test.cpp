// SPDX-License-Identifier: Apache-2.0
// The decoder of the modem's hexadecimal text.
#include "src/carrier/engineering_text.h"

#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAreArray;

namespace engineering_text_test {

// A text, the record of 0xEE after its decoding, and the lines logged.
struct Decoded : NamedRow {
  std::string text;
  const char* record;
  Lines error_lines;
};

std::string error_line(int character, int index) {
  return "log: qorext_hook_sprint_hexstr_to_bin invalid char " + std::to_string(character) + " " +
         std::to_string(index);
}

// clang-format off
const Decoded kDecoded[] = {
    {"Empty",              "",           "EEEEEEEE", {}},
    {"EveryDigit",         "01234567",   "01234567", {}},
    {"UpperCase",          "89ABCDEF",   "89ABCDEF", {}},
    {"LowerCase",          "89abcdef",   "89ABCDEF", {}},
    {"ZeroThenG",          "0G",         "00EEEEEE", {error_line('G', 1)}},
    {"InvalidAtTheStart",  "G5",         "05EEEEEE", {error_line('G', 0)}},
    {"InvalidRepeatsTheDigitBefore", "7G",   "77EEEEEE", {error_line('G', 1)}},
    {"InvalidInTheHighHalf", "12G4",     "1224EEEE", {error_line('G', 2)}},
    {"TwoInvalid",         "A@`F",       "AAAFEEEE", {error_line('@', 1), error_line('`', 2)}},
    {"AllInvalid",         "xz ",        "0000EEEE", {error_line('x', 0), error_line('z', 1), error_line(' ', 2)}},
    {"NeighboursOfDigits", "/:",         "00EEEEEE", {error_line('/', 0), error_line(':', 1)}},
    {"NeighboursOfLetters", "1g",        "11EEEEEE", {error_line('g', 1)}},
    {"HighCharacter",      "5\xC8",      "55EEEEEE", {error_line(0xC8, 1)}},
    {"OneCharacter",       "A",          "A0EEEEEE", {}},
    {"OddLength",          "12A",        "12A0EEEE", {}},
    {"WholeRecord",        "12345678",   "12345678", {}},
    {"BeyondTheRecord",    "123456789G", "12345678", {}},
};
// clang-format on

class HexText : public FakePhone, public testing::WithParamInterface<Decoded> {};

TEST_P(HexText, IsDecoded) {
  uint8_t record[] = {0xEE, 0xEE, 0xEE, 0xEE};
  Bytes characters = text(GetParam().text);
  hexstr_to_bin(characters.data(), characters.size(), record, sizeof record);
  EXPECT_EQ(hex(record), GetParam().record);
  EXPECT_THAT(trace, ElementsAreArray(GetParam().error_lines));
}

INSTANTIATE_TEST_SUITE_P(Of, HexText, testing::ValuesIn(kDecoded), kNameOfRow);

}  // namespace engineering_text_test
