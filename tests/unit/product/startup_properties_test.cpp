// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/operations.h"

#include "tests/unit/product/carrier_phone.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace startup_properties_test {

const std::string kVersion = "qor_qmi_read_baseband_config_version";

class StartUpProperties : public CarrierPhone {};

struct BandClass : NamedRow {
  Bytes item;
  const char* text;
};

const BandClass kBandClasses[] = {
    {"OneByte", {7}, "7"},
    {"FourBytes", le32(123456789), "123456789"},
    {"BytesAfterTheFourth", le32(1) + Bytes(12, 0xFF), "1"},
    {"Largest", le32(0x7FFFFFFF), "2147483647"},
    {"Negative", le32(0xFFFFFFFF), "-1"},
    {"Smallest", le32(0x80000000), "-2147483648"},
    {"Empty", {}, "0"},
    {"TooLong", Bytes(17, 0xFF), "0"},
};

class LteBandClass : public CarrierPhone, public testing::WithParamInterface<BandClass> {};

TEST_P(LteBandClass, IsPublishedAsADecimalNumber) {
  items[53] = GetParam().item;
  EXPECT_EQ(publish_lte_bc_config(), 0);
  bool fits = items[53].size() <= 16;
  Lines too_long = {"log: Input buffer is NULL or too small! max_len(16)."};
  std::string published = std::string("call property_set ril.lte.bc.config=") + GetParam().text;
  EXPECT_EQ(trace, read_lines(53, items[53]) + (fits ? Lines{} : too_long) + Lines{published});
  EXPECT_EQ(exchanges[0].request, le32(53) + Bytes(528));
}

INSTANTIATE_TEST_SUITE_P(Of, LteBandClass, testing::ValuesIn(kBandClasses), kNameOfRow);

TEST_F(StartUpProperties, UnreadableBandClassIsPublishedAsZero) {
  unreadable = {53};
  publish_lte_bc_config();
  EXPECT_THAT(trace, ElementsAreArray(failed_read_lines(53) +
                                      Lines{"call property_set ril.lte.bc.config=0"}));
}

// The number after the last hyphen of the modem's configuration text.
struct Fsg : NamedRow {
  std::string item;
  const char* number;
  const char* error_line;  // nullptr: none
};

const std::string kLongText = std::string(510, 'x') + "-7";

// clang-format off
const Fsg kFsgs[] = {
    {"Usual",           "ABC-123",              "123", nullptr},
    {"LastHyphenWins",  "A-B-C-9",              "9",   nullptr},
    {"NothingAfterIt",  "ABC-",                 "",    nullptr},
    {"HyphenOnly",      "-",                    "",    nullptr},
    {"HyphenFirst",     "-5",                   "5",   nullptr},
    {"NoHyphen",        "ABC",                  "Unknown", "no valid delimiter in ABC"},
    {"Empty",           "",                     "Unknown", "no valid delimiter in "},
    {"ThirteenLong",    "A-1234567890123",      "1234567890123", nullptr},
    {"FourteenLong",    "A-12345678901234",     "1234567890123", nullptr},
    {"EndsAtItsNul",    std::string("A-1\0-2", 6), "1", nullptr},
    {"WholeItem",       kLongText,              "7",   nullptr},
};
// clang-format on

class ConfigVersion : public CarrierPhone, public testing::WithParamInterface<Fsg> {};

TEST_P(ConfigVersion, IsTheTextAfterTheLastHyphen) {
  Bytes fsg = text(GetParam().item);
  items[8029] = fsg;
  unreadable = {8028};
  qor_qmi_read_baseband_config_version();

  Lines expected =
      read_lines(8029, fsg) + Lines{"log: " + kVersion + ": fsg version NV read status(0)"};
  if (GetParam().error_line != nullptr) {
    expected.push_back("log: " + kVersion + ": " + GetParam().error_line);
  }
  expected.push_back(std::string("call property_set ril.baseband.config.ver_num=") +
                     GetParam().number);
  expected = expected + failed_read_lines(8028) + Lines{"log: " + kVersion + ": flex nv status(4)"};
  EXPECT_THAT(trace, ElementsAreArray(expected));
}

INSTANTIATE_TEST_SUITE_P(Of, ConfigVersion, testing::ValuesIn(kFsgs), kNameOfRow);

TEST_F(StartUpProperties, UnreadableFsgVersionIsUnknownWithoutALogLine) {
  unreadable = {8029};
  items[8028] = text("FLEX");
  qor_qmi_read_baseband_config_version();
  EXPECT_THAT(trace,
              ElementsAreArray(failed_read_lines(8029) +
                               Lines{"log: " + kVersion + ": fsg version NV read status(4)",
                                     "call property_set ril.baseband.config.ver_num=Unknown"} +
                               read_lines(8028, text("FLEX")) +
                               Lines{"log: " + kVersion + ": flex nv status(0)",
                                     "call property_set ril.baseband.config.version=FLEX"}));
}

TEST_F(StartUpProperties, UnreadableFlexVersionDoesNotChangeItsProperty) {
  properties["ril.baseband.config.version"] = "before";
  items[8029] = text("A-1");
  unreadable = {8028};
  qor_qmi_read_baseband_config_version();
  EXPECT_EQ(properties["ril.baseband.config.version"], "before");
}

TEST_F(StartUpProperties, VersionsAreReadUpToAStatedLengthOf1024) {
  answer(8, read_answer(8029, 1024, text("A-1")));
  qor_qmi_read_baseband_config_version();
  EXPECT_EQ(properties["ril.baseband.config.ver_num"], "1");
  EXPECT_EQ(properties["ril.baseband.config.version"], "A-1");

  answer(8, read_answer(8029, 1025, text("A-1")));
  qor_qmi_read_baseband_config_version();
  EXPECT_EQ(properties["ril.baseband.config.ver_num"], "Unknown");
  EXPECT_EQ(properties["ril.baseband.config.version"], "");
}

TEST_F(StartUpProperties, FlexVersionIsCutTo63Characters) {
  for (size_t length : {62u, 63u, 64u, 512u}) {
    items[8028] = Bytes(length, 'f');
    qor_qmi_read_baseband_config_version();
    EXPECT_EQ(properties["ril.baseband.config.version"],
              std::string(std::min<size_t>(length, 63), 'f'));
  }
}

TEST_F(StartUpProperties, ShorterFlexVersionKeepsTheEndOfTheFsgVersion) {
  items[8029] = text("ABCDEF-123");
  items[8028] = text("xyz");
  qor_qmi_read_baseband_config_version();
  EXPECT_EQ(properties["ril.baseband.config.version"], "xyzDEF-123");
}

TEST_F(StartUpProperties, FlexVersionEndsAtItsNul) {
  items[8029] = text("ABCDEF-123");
  items[8028] = text("xyz") + Bytes{0};
  qor_qmi_read_baseband_config_version();
  EXPECT_EQ(properties["ril.baseband.config.version"], "xyz");
}

TEST_F(StartUpProperties, VersionItemsAreReadFromTheirStart) {
  qor_qmi_read_baseband_config_version();
  ASSERT_EQ(exchanges.size(), 2u);
  EXPECT_EQ(exchanges[0].request, le32(8029) + Bytes(528));
  EXPECT_EQ(exchanges[1].request, le32(8028) + Bytes(528));
}

// The IMEI software version; the number is -1 when nothing is to be written.
struct ImeiSv : NamedRow {
  const char* property;
  int number;
};

const ImeiSv kImeiSvs[] = {
    {"OneDigit", "7", 7},         {"LeadingZero", "08", 8},
    {"TwoDigits", "99", 99},      {"Zero", "0", 0},
    {"Letters", "ab", 0},         {"DigitThenLetter", "4x", 4},
    {"NegativeWraps", "-1", 255}, {"Empty", "", -1},
    {"ThreeDigits", "123", -1},   {"ThreeLetters", "abc", -1},
};

class ImeiSvProperty : public CarrierPhone, public testing::WithParamInterface<ImeiSv> {};

TEST_P(ImeiSvProperty, IsWrittenWhenItHasOneOrTwoCharacters) {
  properties["ro.radio.imei.sv"] = GetParam().property;
  update_imei_sv();
  if (GetParam().number < 0) {
    EXPECT_THAT(trace, ElementsAre("log: IMEI_SV property is not in the range/not defined\n"));
    return;
  }
  Bytes byte = {static_cast<uint8_t>(GetParam().number)};
  EXPECT_THAT(
      trace, ElementsAreArray(
                 Lines{"log: IMEI_SV number update  " + std::to_string(GetParam().number)} +
                 write_lines(41, byte) +
                 Lines{"log: IMEI_SV property write status if 0-success else failure return 0\n"}));
}

INSTANTIATE_TEST_SUITE_P(Of, ImeiSvProperty, testing::ValuesIn(kImeiSvs), kNameOfRow);

TEST_F(StartUpProperties, ImeiSvThatIsNotDefinedIsNotWritten) {
  update_imei_sv();
  EXPECT_THAT(trace, ElementsAre("log: IMEI_SV property is not in the range/not defined\n"));
}

TEST_F(StartUpProperties, RefusedImeiSvIsLogged) {
  properties["ro.radio.imei.sv"] = "7";
  unwritable = {41};
  update_imei_sv();
  EXPECT_THAT(
      trace, ElementsAreArray(
                 Lines{"log: IMEI_SV number update  7"} + failed_write_lines(41, {7}) +
                 Lines{"log: IMEI_SV property write status if 0-success else failure return 4\n"}));
}

}  // namespace startup_properties_test
