// SPDX-License-Identifier: Apache-2.0
#include "src/host/host.h"

#include <iostream>

#include "src/features/features.h"
#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::StrEq;

namespace indications_test {

std::string notification(const std::string& characters) {
  Bytes data = text(characters);
  data.resize(22);
  return cdma_event(1111, data);
}

std::string numbered_notification(int number) {
  return notification("UNSOLNOTIFY9876-" + std::to_string(number));
}

std::string printed(const Lines& lines) {
  std::string all;
  for (const std::string& line : lines) all += line + "\n";
  return all;
}

class Indications : public ServingPhone {
 protected:
  [[noreturn]] static void print_and_exit(const Lines& lines) {
    std::cerr << printed(lines) << std::flush;
    _exit(0);
  }
};

// Each test runs in its own process, where the counter has its start value.
class FirstNotifications : public Indications {
 protected:
  FirstNotifications() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(FirstNotifications, CarryTheNumbers12And13And14) {
  Lines expected;
  for (int number : {12, 13, 14}) {
    expected = expected + declined(1, {"unsol: " + numbered_notification(number)});
  }
  auto notify_three_times = [this] {
    for (int i = 0; i < 3; ++i) indicate(1);
    print_and_exit(trace);
  };
  EXPECT_EXIT(notify_three_times(), ExitedWithCode(0), StrEq(printed(expected)));
  EXPECT_EQ(numbered_notification(12).size(), 2u * 50);
}

TEST_F(FirstNotifications, ContinueTheCountAfterAFailedWriteAndWithoutMemory) {
  auto lose_the_second_and_the_third = [this] {
    indicate(1);
    write_errnos = {EPIPE};
    indicate(1);
    write_errnos = {0};
    allocations_left = 0;
    indicate(1);
    allocations_left = -1;
    indicate(1);
    print_and_exit(trace);
  };
  Lines expected = declined(1, {"unsol: " + numbered_notification(12)}) +  //
                   declined(1, {"log: Write to parent failed 32"}) +       //
                   declined(1) +                                           //
                   declined(1, {"unsol: " + numbered_notification(15)});
  EXPECT_EXIT(lose_the_second_and_the_third(), ExitedWithCode(0), StrEq(printed(expected)));
}

TEST_F(FirstNotifications, AreNotCountedByOtherIndications) {
  auto notify_after_others = [this] {
    for (unsigned int id : {0x16u, 0x12u, 0x99u, 0xAu}) indicate(id);
    trace.clear();
    indicate(1);
    print_and_exit(unsolicited());
  };
  EXPECT_EXIT(notify_after_others(), ExitedWithCode(0), StrEq(numbered_notification(12) + "\n"));
}

TEST_F(FirstNotifications, AreCutToTwentyCharacters) {
  auto notify_up_to_10000 = [this] {
    for (int number = 12; number < 9999; ++number) indicate(1);
    trace.clear();
    for (int i = 0; i < 2; ++i) indicate(1);
    print_and_exit(unsolicited());
  };
  Lines expected = {numbered_notification(9999), notification("UNSOLNOTIFY9876-1000")};
  EXPECT_EXIT(notify_up_to_10000(), ExitedWithCode(0), StrEq(printed(expected)));
}

TEST_F(Indications, FixedMessageIsAlwaysTheSame28Bytes) {
  Lines once = declined(0x16, {"unsol: " + "01000000 08000000 00020006 00000000"
                                           "000000000000000000000000"_hex});
  indicate(0x16);
  EXPECT_EQ(trace, once);
  encoded = Bytes(100, 0xFF);
  indicate(0x16);
  EXPECT_EQ(trace, once + once);
}

TEST_F(Indications, FixedMessageThatCannotBeWrittenIsLost) {
  write_errnos = {EBADF};
  indicate(0x16);
  EXPECT_EQ(trace, declined(0x16, {"log: Write to parent failed 9"}));
}

TEST_F(Indications, FixedMessageWithoutMemoryIsLost) {
  allocations_left = 0;
  indicate(0x16);
  EXPECT_EQ(trace, declined(0x16));
}

// The line of a failed decode identifies the handler.
TEST_F(Indications, EachRowReachesItsHandler) {
  const struct {
    unsigned int id;
    Lines lines;
  } kRows[] = {
      {0x0A, {"call decode 0xa", "log: failed to decode pfp idl data"}},
      {0x0F, {"call decode 0xf", "log: uploadbplogs:failed to decode idl data"}},
      {0x10C, {"call decode 0x10c", "log: sigcovIndHndlr: failed to decode ind data"}},
  };
  for (const auto& row : kRows) {
    fail_decode(row.id, QMI_MALFORMED_ERR);
    trace.clear();
    indicate(row.id);
    EXPECT_EQ(trace, declined(row.id) + row.lines);
  }
}

TEST_F(Indications, HandlersReturnZeroAlsoAfterAFailure) {
  auto deliver = [this](auto* handler, unsigned int id) {
    return handler(vendor_client(), id, encoded.data(), 5u, nullptr);
  };
  for (auto [handler, id] : {std::pair(&utilsIndHndlr, 0x0Fu), {&sigcovIndHndlr, 0x10Cu}}) {
    EXPECT_EQ(deliver(handler, id), 0);
    allocations_left = 0;
    EXPECT_EQ(deliver(handler, id), 0);
    fail_decode(id, QMI_MALFORMED_ERR);
    EXPECT_EQ(deliver(handler, id), 0);
    allocations_left = -1;
  }
}

TEST_F(Indications, UnknownIdIsLoggedAndDropped) {
  const struct {
    unsigned int id;
    const char* number;
  } kRows[] = {
      {0x00, "0"},   {0x02, "2"},    {0x0B, "11"},   {0x11, "17"},
      {0x99, "153"}, {0x10A, "266"}, {0x10D, "269"}, {0xFFFFFFFF, "4294967295"},
  };
  for (const auto& row : kRows) {
    trace.clear();
    indicate(row.id);
    EXPECT_EQ(trace,
              declined(row.id, {std::string("log: Unsupported Indicator message ") + row.number}));
  }
  EXPECT_THAT(exchanges, IsEmpty());
}

TEST_F(Indications, CarrierIndicationIsNotPassedToTheTable) {
  decode_to(0x12, le16(7));
  indicate(0x12);
  EXPECT_THAT(trace, ElementsAre("log: Handling unsol msg 18", "call decode 0x12",
                                 "unsol: " + cdma_event(0x020001B0, le32(7)),
                                 "log: Unsol resp 0x12 is handled by Sprint handler."));
}

TEST_F(Indications, UndecodableCarrierIndicationIsNotPassedToTheTable) {
  for (auto [id, number, digits] :
       {std::tuple<uint32_t, const char*, const char*>{0x12u, "18", "12"},
        {0x10Bu, "267", "10b"}}) {
    fail_decode(id, -5);
    trace.clear();
    indicate(id);
    EXPECT_THAT(
        trace,
        ElementsAre(std::string("log: Handling unsol msg ") + number,
                    std::string("call decode 0x") + digits,
                    "log: qor_qmi_sprint_hook_ind_cb: qmi_client_message_decode Failed(-5).",
                    std::string("log: Unsol resp 0x") + digits + " is handled by Sprint handler."));
  }
}

TEST_F(Indications, CallbackPassesItsArgumentsUnchanged) {
  ASSERT_NE(indication_callback, nullptr);
  decode_to(0x12, le16(1));
  indication_callback(vendor_client(), 0x12, encoded.data(), 5, nullptr);
  EXPECT_THAT(trace,
              ElementsAre("log: qmi_qorext_hook_ind_cb: msg_id=0x12 buf_len=5 cb_data=(nil)\n",
                          "log: Handling unsol msg 18", "call decode 0x12",
                          "unsol: " + cdma_event(0x020001B0, le32(1)),
                          "log: Unsol resp 0x12 is handled by Sprint handler."));
}

}  // namespace indications_test
