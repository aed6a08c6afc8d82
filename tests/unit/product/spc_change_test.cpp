// The change of the service programming code that a NAM write may carry.
#include "nam_phone.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::string kFailureIs = "qorext_hook_sprint_set_nam_block_request_info:  ERROR FOUND ";

TEST_F(NamWrite, UnchangedCodeIsNotWritten) {
  set();
  EXPECT_FALSE(is_code_changed());
}

TEST_F(NamWrite, ChangedCodeIsWrittenBehindTheItems) {
  nam.new_spc = "654321";
  set();
  ASSERT_FALSE(exchanges.empty());
  EXPECT_EQ(exchanges.back().id, 0x52u);
  EXPECT_EQ(exchanges.back().request, text("123456654321"));
  EXPECT_THAT(logs(), Contains("isSpcChanged = 1, (123456 ~ 654321)"));
}

TEST_F(NamWrite, FailedCodeChangeIsNumber19) {
  nam.new_spc = "654321";
  for (int rc : {-3, 0}) {
    fail_send(0x52, rc);
    answer(0x52, rc == 0 ? kRefusal : Bytes{});
    set(5);
    EXPECT_THAT(logs(), Contains(kFailureIs + "19 ")) << rc;
    EXPECT_EQ(writes().size(), 15u);
  }
}

TEST_F(NamWrite, NewCodeWithALetterChangesNoCodeAndWritesTheItems) {
  for (size_t i = 0; i < 6; ++i) {
    nam.new_spc = "654321";
    nam.new_spc[i] = 'x';
    set();
    EXPECT_THAT(logs(), Contains("Byte (" + std::to_string(i) + ") of SPC is not digit."));
    EXPECT_THAT(logs(), Contains("isSpcChanged = 1, (123456 ~ " + nam.new_spc + ")"));
    EXPECT_FALSE(is_code_changed());
    EXPECT_EQ(writes().size(), 15u);
  }
}

TEST_F(NamWrite, EveryDigitMayStandInANewCode) {
  for (std::string code : {"012345", "678909", "900000", "000009"}) {
    nam.new_spc = code;
    set();
    ASSERT_TRUE(is_code_changed()) << code;
    EXPECT_EQ(exchanges.back().request, text(kNamCode + code));
  }
}

TEST_F(NamWrite, FirstByteThatIsNoDigitIsTheOneTold) {
  for (char next_to_digits : {'/', ':'}) {
    nam.new_spc = std::string("65") + next_to_digits + "3xx";
    set();
    EXPECT_THAT(logs(), Contains("Byte (2) of SPC is not digit."));
    EXPECT_THAT(logs(), Contains(HasSubstr("of SPC is not digit.")).Times(1));
  }
}

TEST_F(NamWrite, CodeThatIsNoDigitButUnchangedIsNotLookedAt) {
  nam.new_spc = "ABCDEF";
  set(0, "ABCDEF");
  EXPECT_THAT(logs(), Contains("isSpcChanged = 0, (ABCDEF ~ ABCDEF)"));
  EXPECT_THAT(logs(), Not(Contains(HasSubstr("of SPC is not digit."))));
}

TEST_F(NamWrite, CodesAreComparedUpToTheirNul) {
  nam.new_spc = std::string("12\0abc", 6);
  set(0, std::string("12\0xyz", 6));
  EXPECT_THAT(logs(), Contains("isSpcChanged = 0, (12 ~ 12)"));
  EXPECT_FALSE(is_code_changed());
}

TEST_F(NamWrite, LastCharacterOfTheCodeCounts) {
  nam.new_spc = "123457";
  set();
  EXPECT_TRUE(is_code_changed());
}

TEST_F(NamWrite, ChangeOfAnEarlierRequestIsForgotten) {
  nam.new_spc = "654321";
  set();
  nam.new_spc = kNamCode;
  set();
  EXPECT_FALSE(is_code_changed());
}

}  // namespace
