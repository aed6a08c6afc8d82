// SPDX-License-Identifier: Apache-2.0
#include "src/capture/capture.h"

#include <fcntl.h>

#include "tests/unit/product/capture_phone.h"
#include "tests/unit/product/serving_phone.h"

using testing::ElementsAreArray;

namespace panic_notice_test {

constexpr char kBootInfo[] = "/proc/bootinfo";
constexpr char kRestarts[] = "/sys/module/subsystem_restart/parameters/modem_restarts";
constexpr char kReason[] = "/sys/module/pil_q6v5_mss/parameters/ssr_reason";

const Lines kLookingForReason = {"debug: is_kernel_panic looking for POWERUPREASON"};
const Lines kLookingForRestarts = {"debug: is_modem_panic looking for BP Panic"};
const Lines kNoRestarts = {"log: *** failed open the sys file : restart_count ***\n"};
const Lines kLookingForSsr = {
    "debug: *** Try open the sys file bp panic_reason : "
    "/sys/module/pil_q6v5_mss/parameters/ssr_reason\n"};
const Lines kNoSsr = {"log: *** failed open the sys file : panic_reason ***\n"};
const Lines kCalled = {"debug: notify_auto_verify_sim_pin from AP called", "send vendor 0xf"};
const Lines kNotCalled = {"debug: notify_auto_verify_sim_pin from AP NOT called"};

Lines reason(const std::string& value) {
  return kLookingForReason + Lines{"debug: is_kernel_panic POWERUPREASON=" + value};
}

Lines restarts(const std::string& number) {
  return kLookingForRestarts + Lines{"log: modem_panic: " + number};
}

const Lines kNothingFound =
    kLookingForRestarts + kNoRestarts + kLookingForSsr + kNoSsr + kNotCalled;

class PanicNotice : public CapturePhone {
 protected:
  PanicNotice() { qmi_qorext_hook_client_init(handleUnsolMsg); }

  // The trace of a check that returns 0.
  const Lines& check() {
    trace.clear();
    EXPECT_EQ(notify_auto_verify_sim_pin(), 0);
    return trace;
  }

  // The POWERUPREASON that is found in this text.
  std::string reason_in(const std::string& boot_info) {
    put(kBootInfo, boot_info);
    const std::string prefix = "debug: is_kernel_panic POWERUPREASON=";
    check();
    EXPECT_EQ(trace.at(1).compare(0, prefix.size(), prefix), 0) << trace[1];
    std::string value = trace[1].substr(prefix.size());
    bool is_panic = value == "0x00020000";
    EXPECT_THAT(trace, ElementsAreArray(reason(value) + (is_panic ? kCalled : kNothingFound)));
    return value;
  }
};

TEST_F(PanicNotice, MissingFilesSendNothing) {
  EXPECT_THAT(check(), ElementsAreArray(kNothingFound));
}

TEST_F(PanicNotice, KernelPanicSendsTheNoticeWithoutACheckOfTheModem) {
  put(kBootInfo, "POWERUPREASON : 0x00020000\n");
  put(kRestarts, "0\n");
  EXPECT_THAT(check(), ElementsAreArray(reason("0x00020000") + kCalled));
}

TEST_F(PanicNotice, NoticeHasTypeFourLengthOneAndZeros) {
  put(kBootInfo, "POWERUPREASON : 0x00020000\n");
  check();
  ASSERT_EQ(exchanges.size(), 1u);
  EXPECT_EQ(exchanges[0].request, le32(4) + le32(1) + Bytes(256));
  EXPECT_EQ(exchanges[0].response_length, 520u);
  EXPECT_EQ(exchanges[0].timeout_ms, 15000u);
}

TEST_F(PanicNotice, ResponseToTheNoticeIsIgnored) {
  put(kRestarts, "1\n");
  answer(0x0F, le32(1) + le32(512) + Bytes(512, 0xFF));
  EXPECT_EQ(notify_auto_verify_sim_pin(), 0);
}

TEST_F(PanicNotice, NoticeThatCannotBeSentReturnsMinusOne) {
  fail_send(0x0F, -3);
  put(kBootInfo, "POWERUPREASON : 0x00020000\n");
  EXPECT_EQ(notify_auto_verify_sim_pin(), -1);
  put(kBootInfo, "");
  put(kRestarts, "1\n");
  EXPECT_EQ(notify_auto_verify_sim_pin(), -1);
  std::filesystem::remove(at(kRestarts));
  put(kReason, "watchdog\n");
  EXPECT_EQ(notify_auto_verify_sim_pin(), -1);
}

TEST_F(PanicNotice, UnreadableBootInfoIsSkippedWithoutALogLine) {
  make_folder(kBootInfo);
  EXPECT_THAT(check(), ElementsAreArray(kNothingFound));
}

TEST_F(PanicNotice, PowerUpReasonFollowsTheNextColonAndSpace) {
  EXPECT_EQ(reason_in("POWERUPREASON: 0x00020000"), "0x00020000");
  EXPECT_EQ(reason_in("POWERUPREASON : 0x00020000\n"), "0x00020000");
  EXPECT_EQ(reason_in("SERIAL : 12\nPOWERUPREASON : 0x00020000 (panic)\nX : 1\n"), "0x00020000");
  EXPECT_EQ(reason_in("POWERUPREASON=5\nBOARD: 0x00020000\t1\n"), "0x00020000");
  EXPECT_EQ(reason_in("POWERUPREASON: 0x4000\nPOWERUPREASON: 0x00020000\n"), "0x4000");
}

TEST_F(PanicNotice, PowerUpReasonWithoutColonAndSpaceIsEmpty) {
  EXPECT_EQ(reason_in("POWERUPREASON=0x00020000\n"), "");
  EXPECT_EQ(reason_in("POWERUPREASON:0x00020000\n"), "");
  EXPECT_EQ(reason_in("BOARD: 0x00020000\nPOWERUPREASON"), "");
  EXPECT_EQ(reason_in("powerupreason: 0x00020000\n"), "");
  EXPECT_EQ(reason_in("POWERUPREASON:  0x00020000\n"), "");
  EXPECT_EQ(reason_in("POWERUPREASON: \n0x00020000\n"), "");
  EXPECT_EQ(reason_in(""), "");
}

TEST_F(PanicNotice, OtherSpellingsOfTheReasonAreNotAPanic) {
  for (std::string value : {"0x20000", "0X00020000", "0x0002000", "0x000200000", "00020000"}) {
    EXPECT_EQ(reason_in("POWERUPREASON : " + value + "\n"), value);
  }
}

TEST_F(PanicNotice, ReasonIsCutAtThirtyOneCharacters) {
  std::string longest = "0x00020000-234567890123456789ab";
  ASSERT_EQ(longest.size(), 31u);
  EXPECT_EQ(reason_in("POWERUPREASON : " + longest + "\n"), longest);
  EXPECT_EQ(reason_in("POWERUPREASON : " + longest + "c\n"), longest);
}

TEST_F(PanicNotice, BootInfoIsReadUpToItsByte1023) {
  std::string line = "POWERUPREASON: 0x00020000";
  EXPECT_EQ(reason_in(std::string(1023 - line.size(), '\n') + line + "7"), "0x00020000");
  EXPECT_EQ(reason_in(std::string(1024 - line.size(), '\n') + line + "7"), "0x0002000");
  EXPECT_EQ(reason_in(std::string(1023, '\n') + line), "");
}

TEST_F(PanicNotice, RestartsOfTheModemSendTheNotice) {
  const std::pair<std::string, std::string> rows[] = {
      {"1\n", "1"},      {"7", "7"},
      {"0012\n", "12"},  {"-1\n", "1"},
      {"a1 b2\n", "12"}, {"2\n0\n", "2"},
      {"0x10\n", "10"},  {" 3 \n", "3"},
      {"9\n", "9"},      {"1023456789\n", "1023456789"},
      {"/4:5\n", "45"},
  };
  for (const auto& [text, number] : rows) {
    put(kRestarts, text);
    EXPECT_THAT(check(), ElementsAreArray(restarts(number) + kCalled)) << text;
  }
}

TEST_F(PanicNotice, RestartsOfZeroSendNothingForAnyReason) {
  put(kReason, "watchdog\n");
  for (std::string text : {"0\n", "0", "000\n", "x0\n"}) {
    put(kRestarts, text);
    EXPECT_THAT(check(), ElementsAreArray(restarts("0") + kNotCalled)) << text;
  }
}

TEST_F(PanicNotice, RestartsWithoutADigitInTheFirstLineContinueWithTheReasonFile) {
  put(kReason, "watchdog\n");
  std::string beyond_the_line = std::string(31, 'a') + "1\n";
  for (std::string text : {std::string("\n"), std::string(), std::string("none\n"),
                           std::string("none\n5\n"), std::string("\0005\n", 3), beyond_the_line}) {
    put(kRestarts, text);
    EXPECT_THAT(check(), ElementsAreArray(kLookingForRestarts + kLookingForSsr + kCalled)) << text;
  }
}

TEST_F(PanicNotice, UnreadableRestartsContinueWithTheReasonFile) {
  make_folder(kRestarts);
  put(kReason, "watchdog\n");
  EXPECT_THAT(check(), ElementsAreArray(kLookingForRestarts + kLookingForSsr + kCalled));
}

TEST_F(PanicNotice, AnyReasonOfTheModemSendsTheNotice) {
  for (std::string text : {"watchdog\n", "0", "\n", " "}) {
    put(kReason, text);
    EXPECT_THAT(check(),
                ElementsAreArray(kLookingForRestarts + kNoRestarts + kLookingForSsr + kCalled))
        << text;
  }
}

TEST_F(PanicNotice, EmptyReasonOfTheModemSendsNothing) {
  const Lines nothing = kLookingForRestarts + kNoRestarts + kLookingForSsr + kNotCalled;
  put(kReason);
  EXPECT_THAT(check(), ElementsAreArray(nothing));
  put(kReason, std::string("\0watchdog\n", 10));
  EXPECT_THAT(check(), ElementsAreArray(nothing));
  std::filesystem::remove(at(kReason));
  make_folder(kReason);
  EXPECT_THAT(check(), ElementsAreArray(nothing));
}

TEST_F(PanicNotice, ChecksOpenFilesForReadingOnly) {
  put(kRestarts, "0\n");
  check();
  for (const auto& [path, flags] : opened) EXPECT_EQ(flags & O_ACCMODE, O_RDONLY) << path;
  EXPECT_EQ(opened.size(), 2u);
}

}  // namespace panic_notice_test
