// SPDX-License-Identifier: Apache-2.0
// The decoder of the modem's hexadecimal texts by itself.
#include "src/carrier/engineering_text.h"

#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAreArray;

namespace {

// A text, what it leaves in a record of 0xEE, and the complaints.
struct Decoded : NamedRow {
  std::string text;
  const char* record;
  Lines complaints;
};

std::string complaint(int character, int index) {
  return "log: qorext_hook_sprint_hexstr_to_bin invalid char " + std::to_string(character) + " " +
         std::to_string(index);
}

// clang-format off
const Decoded kDecoded[] = {
    {"Empty",              "",           "EEEEEEEE", {}},
    {"EveryDigit",         "01234567",   "01234567", {}},
    {"UpperCase",          "89ABCDEF",   "89ABCDEF", {}},
    {"LowerCase",          "89abcdef",   "89ABCDEF", {}},
    {"ZeroThenG",          "0G",         "00EEEEEE", {complaint('G', 1)}},
    {"InvalidAtTheStart",  "G5",         "05EEEEEE", {complaint('G', 0)}},
    {"InvalidTakesTheOneBefore", "7G",   "77EEEEEE", {complaint('G', 1)}},
    {"InvalidInTheHighHalf", "12G4",     "1224EEEE", {complaint('G', 2)}},
    {"TwoInvalid",         "A@`F",       "AAAFEEEE", {complaint('@', 1), complaint('`', 2)}},
    {"AllInvalid",         "xz ",        "0000EEEE", {complaint('x', 0), complaint('z', 1), complaint(' ', 2)}},
    {"NeighboursOfDigits", "/:",         "00EEEEEE", {complaint('/', 0), complaint(':', 1)}},
    {"NeighboursOfLetters", "1g",        "11EEEEEE", {complaint('g', 1)}},
    {"HighCharacter",      "5\xC8",      "55EEEEEE", {complaint(0xC8, 1)}},
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
  EXPECT_THAT(trace, ElementsAreArray(GetParam().complaints));
}

INSTANTIATE_TEST_SUITE_P(Of, HexText, testing::ValuesIn(kDecoded), kNameOfRow);

}  // namespace
