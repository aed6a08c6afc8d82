// SPDX-License-Identifier: Apache-2.0
// The change of the service programming code in a NAM write.
#include "tests/unit/product/nam_phone.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace spc_change_test {

const std::string kFailureIs = "qorext_hook_sprint_set_nam_block_request_info:  ERROR FOUND ";

// Selects parts of the trace around the items.
class SpcChange : public NamWrite {
 protected:
  const std::string kSet = "log: qorext_hook_sprint_set_nam_info:  SET NAM ";
  const std::string kBlock = "log: qorext_hook_sprint_set_nam_block_request_info:  ";

  Lines after_items(const std::string& last_line) const {
    auto item = std::find(trace.rbegin(), trace.rend(), last_line).base();
    return {item, trace.end()};
  }
  // The lines after those of the identities and before those of the system values.
  Lines check() const {
    auto begins = [](std::string text) {
      return [text](const std::string& line) { return line.starts_with(text); };
    };
    auto from = std::find_if(trace.begin(), trace.end(), begins(kSet + "MccT "));
    auto to = std::find_if(from, trace.end(), begins(kSet + "SID "));
    return {from + 1, to};
  }
  Lines complete() const { return {kBlock + "SET NAM BLOCK NV ENTRY COMPLETE  0 "}; }
  Lines written() const {
    return after_items("log: qorext_hook_sprint_set_nam_item: WRITE NV VALUE 0 ");
  }
};

TEST_F(SpcChange, IsLoggedLineByLine) {
  const Lines kSpc = {"log: qor_qmi_sprint_write_spc entered ", "send dms 0x52"};
  const Lines kError = {kBlock + "ERROR FOUND 19 "};
  nam.new_spc = "654321";
  set();
  EXPECT_EQ(check(), (Lines{"log: isSpcChanged = 1, (123456 ~ 654321)"}));
  EXPECT_EQ(written(), kSpc + complete() + reply_lines(replies()[0]));

  answer(0x52, kRefusal);
  set(5);
  EXPECT_EQ(written(), kSpc + Lines{"log: qor_qmi_sprint_write_spc Error = 16"} + complete() +
                           kError + reply_lines(replies()[0]));
  fail_send(0x52, -3);
  answer(0x52, {});
  set(5);
  EXPECT_EQ(written(), kSpc +
                           Lines{"log: qor_qmi_sprint_write_spc: qmi_client_send_msg_sync (-3)."} +
                           complete() + kError + reply_lines(replies()[0]));
}

TEST_F(SpcChange, OfOtherThanDigitsIsLoggedLineByLine) {
  nam.new_spc = "65x321";
  set();
  EXPECT_EQ(check(), (Lines{"log: isSpcChanged = 1, (123456 ~ 65x321)",
                            "log: Byte (2) of SPC is not digit."}));
  EXPECT_EQ(written(), complete() + reply_lines(replies()[0]));
}

TEST_F(NamWrite, UnchangedCodeIsNotWritten) {
  set();
  EXPECT_FALSE(is_code_changed());
}

TEST_F(NamWrite, ChangedCodeIsWrittenAfterTheItems) {
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

TEST_F(NamWrite, NewCodeMayHaveAnyDigit) {
  for (std::string code : {"012345", "678909", "900000", "000009"}) {
    nam.new_spc = code;
    set();
    ASSERT_TRUE(is_code_changed()) << code;
    EXPECT_EQ(exchanges.back().request, text(kNamCode + code));
  }
}

TEST_F(NamWrite, FirstByteThatIsNotADigitIsReported) {
  for (char next_to_digits : {'/', ':'}) {
    nam.new_spc = std::string("65") + next_to_digits + "3xx";
    set();
    EXPECT_THAT(logs(), Contains("Byte (2) of SPC is not digit."));
    EXPECT_THAT(logs(), Contains(HasSubstr("of SPC is not digit.")).Times(1));
  }
}

TEST_F(NamWrite, UnchangedCodeIsNotCheckedForDigits) {
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

TEST_F(NamWrite, LastCharacterOfTheCodeIsCompared) {
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

}  // namespace spc_change_test
