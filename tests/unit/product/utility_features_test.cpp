// SPDX-License-Identifier: Apache-2.0
// The generic-hook features that are one utility request each: system-information filter, radio
// state at the end of a call, silent reboot.
#include "src/features/features.h"
#include "tests/unit/product/feature_phone.h"

using testing::ElementsAre;

namespace {

constexpr uint32_t kSilentReboot = 0x50019;
constexpr uint32_t kSysInfoFilter = 0x5001E;
constexpr uint32_t kCallEndRadioState = 0x50505;

class SysInfoFilter : public FeaturePhone {
 protected:
  static Lines outcome(int rc, uint8_t status) {
    return {"log: sys_info filter: sending qorext util request", "send vendor 0xf",
            "log: sys_info filter: sending request result is " + std::to_string(rc),
            "reply: " + generic_answer(kSysInfoFilter, {status}),
            "log: sys_info filter: sending response, msgLen 0x1, resp value " +
                std::to_string(status) + "."};
  }
};

TEST_F(SysInfoFilter, PassesTheFirstByteOn) {
  for (uint8_t byte : Bytes{0, 1, 0x7F, 0xFF}) {
    exchanges.clear();
    trace.clear();
    ask(Request::generic(kSysInfoFilter, {byte, 0xEE}));
    EXPECT_EQ(trace, outcome(0, 0));
    EXPECT_EQ(sent().request, le32(5) + le32(1) + Bytes{byte} + Bytes(255));
  }
}

TEST_F(SysInfoFilter, IgnoresTheModemsAnswer) {
  answer(kUtilityMessage, utility_response(17, Bytes(512, 0x11)));
  ask(Request::generic(kSysInfoFilter, {1}));
  EXPECT_EQ(trace, outcome(0, 0));
}

TEST_F(SysInfoFilter, AnswersAFailedSendWithFive) {
  fail_send(kUtilityMessage, -3);
  ask(Request::generic(kSysInfoFilter, {1}));
  EXPECT_EQ(trace, outcome(-3, 5));
}

TEST_F(SysInfoFilter, WithoutPayloadPassesAZeroOn) {
  ask(Request::generic(kSysInfoFilter));
  EXPECT_EQ(sent().request, le32(5) + le32(1) + Bytes(256));
}

class CallEndRadioState : public FeaturePhone {
 protected:
  static Lines outcome(int rc, const Bytes& data) {
    char tail[32];
    snprintf(tail, sizeof tail, "0x%zx, resp value %d.", data.size(), data.back());
    return {"log: get_call_end_radio_state : sending qorext util request", "send vendor 0xf",
            "log: get_call_end_radio_state : sending request result is " + std::to_string(rc),
            "reply: " + generic_answer(kCallEndRadioState, data),
            std::string("log: get_call_end_radio_state : sending response, msgLen ") + tail};
  }
};

TEST_F(CallEndRadioState, PutsAStatusInThePlaceOfTheFirstByte) {
  answer(kUtilityMessage, utility_response(17, from_hex("EE 0100030405060708 090A0B0C0D0EAFFF")));
  ask(Request::generic(kCallEndRadioState, {0x42, 0xEE}));
  EXPECT_EQ(trace, outcome(0, from_hex("00 0100030405060708 090A0B0C0D0EAFFF")) +
                       Lines{"log: get_call_end_radio_state : response, data: "
                             "0x0100030405060708090A0B0C0D0EAFFF"});
  EXPECT_EQ(sent().request, le32(7) + le32(1) + Bytes{0x42} + Bytes(255));
}

TEST_F(CallEndRadioState, AlwaysCarriesSeventeenBytes) {
  for (uint32_t length : {0u, 1u, 16u, 18u, 512u, 0xFFFFFFFFu}) {
    answer(kUtilityMessage, utility_response(length, {0xEE, 0xAB}));
    trace.clear();
    ask(Request::generic(kCallEndRadioState, {1}));
    EXPECT_EQ(trace, outcome(0, from_hex("00 AB") + Bytes(15)) +
                         Lines{"log: get_call_end_radio_state : response, data: "
                               "0xAB000000000000000000000000000000"});
  }
}

TEST_F(CallEndRadioState, AnswersAFailedSendWithFiveAlone) {
  fail_send(kUtilityMessage, -3);
  answer(kUtilityMessage, utility_response(17, Bytes(512, 0x11)));
  ask(Request::generic(kCallEndRadioState, {1}));
  EXPECT_EQ(trace, outcome(-3, {5}));
}

class SilentReboot : public FeaturePhone {
 protected:
  static Lines asked(int rc) {
    return {"log: Silent reboot: Sending qorext util request", "send vendor 0xf",
            "log: Silent reboot: Sending request result is " + std::to_string(rc)};
  }

  static Lines announced(size_t length) {
    return {
        "log: handleSilentRebootResponse >>",
        "log: handleSilentRebootResponse for id 190005, resp len " + std::to_string(length) + ".",
        "log: handleSilentRebootResponse resp size " + std::to_string(length + 8) + "."};
  }

  static Lines relayed(const Bytes& data, uint8_t last) {
    char tail[32];
    snprintf(tail, sizeof tail, "0x%zx, resp value %d.", data.size(), last);
    return announced(data.size()) +
           Lines{"reply: " + generic_answer(kSilentReboot, data),
                 std::string("log: handleSilentRebootResponse , msgLen ") + tail};
  }
};

TEST_F(SilentReboot, RelaysTheModemsAnswer) {
  for (uint32_t length : {1u, 2u, 255u, 511u, 512u}) {
    answer(kUtilityMessage, utility_response(length, numbered(512)));
    trace.clear();
    ask(Request::generic(kSilentReboot));
    EXPECT_EQ(trace, asked(0) + relayed(numbered(length), static_cast<uint8_t>(length)));
  }
}

TEST_F(SilentReboot, RelaysAnEmptyAnswerAsTheHeaderAlone) {
  answer(kUtilityMessage, utility_response(0, numbered(512)));
  ask(Request::generic(kSilentReboot));
  EXPECT_EQ(trace, asked(0) + relayed({}, 0));
  EXPECT_THAT(replies(), ElementsAre("01050019 00000000"_hex));
}

TEST_F(SilentReboot, PassesNothingOfThePayloadOn) {
  ask(Request::generic(kSilentReboot, numbered(20)));
  EXPECT_EQ(sent().request, le32(3) + Bytes(260));
}

TEST_F(SilentReboot, AnswersAFailedSendWithFive) {
  fail_send(kUtilityMessage, -3);
  answer(kUtilityMessage, utility_response(17, Bytes(512, 0x11)));
  ask(Request::generic(kSilentReboot));
  EXPECT_EQ(trace, asked(-3) +
                       Lines{"log:  Silent reboot send msg error, send back generic failure."} +
                       relayed({5}, 5));
}

TEST_F(SilentReboot, AnswerIsCutToWhatTheModemCanHaveGiven) {
  for (uint32_t length : {513u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    answer(kUtilityMessage, utility_response(length, numbered(512)));
    trace.clear();
    ask(Request::generic(kSilentReboot));
    EXPECT_THAT(replies(), ElementsAre(generic_answer(kSilentReboot, numbered(512)))) << length;
  }
}

TEST_F(SilentReboot, AnnouncesItsReplyBeforeThereIsMemoryForIt) {
  allocations_left = 0;
  ask(Request::generic(kSilentReboot));
  EXPECT_EQ(trace, asked(0) + announced(0));
}

}  // namespace
