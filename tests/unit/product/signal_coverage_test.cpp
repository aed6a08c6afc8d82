// SPDX-License-Identifier: Apache-2.0
#include "src/features/features.h"
#include "tests/unit/product/serving_phone.h"

using testing::IsEmpty;

namespace signal_coverage_test {

constexpr uint32_t kCoverage = 0x50020;
constexpr uint32_t kCoverageWithMode = 0x50029;
constexpr unsigned int kCoverageIndication = 0x10C;

const Lines kNotTerminated = {"log: sig_cov warning: no NULL found at the end of string"};

class SignalCoverage : public ServingPhone {
 protected:
  // The trace of a request with this mode and claimed length.
  static Lines outcome(uint32_t id, int mode, int length, const Lines& warning = {},
                       uint8_t status = 0) {
    return Lines{"log: sig_cov: receive request " + std::to_string(mode) + " len " +
                 std::to_string(length)} +
           warning +
           Lines{"send vendor 0xf", "reply: " + generic_answer(id, {status}),
                 "log: qorext_handle_sig_cov_request sending response, msgLen 0x1."};
  }

  static Bytes message(const Bytes& data) {
    auto length = static_cast<uint32_t>(data.size());
    return le32(6) + le32(length) + data + Bytes(256 - data.size());
  }
};

TEST_F(SignalCoverage, FirstFormHasModeZero) {
  ask(Request::generic(kCoverage, text("abc") + Bytes{0}));
  EXPECT_EQ(trace, outcome(kCoverage, 0, 4));
  EXPECT_EQ(sent().request, message(from_hex("00 616263 00")));
}

TEST_F(SignalCoverage, SecondFormHasItsModeInThePayload) {
  for (uint8_t mode : Bytes{0, 1, 0x7F, 0xFF}) {
    ask(Request::generic(kCoverageWithMode, {mode, 'a', 0}));
    EXPECT_EQ(trace, outcome(kCoverageWithMode, mode, 3));
    EXPECT_EQ(sent().request, message({mode, mode, 'a', 0}));
  }
}

TEST_F(SignalCoverage, TextThatIsNotTerminatedLosesItsLastCharacter) {
  ask(Request::generic(kCoverageWithMode, from_hex("02 616263")));
  EXPECT_EQ(trace, outcome(kCoverageWithMode, 2, 4, kNotTerminated));
  EXPECT_EQ(sent().request, message(from_hex("02 02 6162 00")));
}

TEST_F(SignalCoverage, SingleCharacterIsReplacedByTheTerminator) {
  ask(Request::generic(kCoverage, text("a")));
  EXPECT_EQ(trace, outcome(kCoverage, 0, 1, kNotTerminated));
  EXPECT_EQ(sent().request, message({0, 0}));
}

TEST_F(SignalCoverage, EmptyPayloadSendsOnlyTheMode) {
  for (uint32_t id : {kCoverage, kCoverageWithMode}) {
    ask(Request::generic(id));
    EXPECT_EQ(trace, outcome(id, 0, 0));
    EXPECT_EQ(sent().request, message({0}));
  }
}

TEST_F(SignalCoverage, TextIsLimitedTo255Bytes) {
  for (uint32_t length : {254u, 255u, 256u, 300u, 4000u}) {
    ask(Request::generic(kCoverage, Bytes(length, 'x')));
    EXPECT_EQ(trace, outcome(kCoverage, 0, static_cast<int>(length), kNotTerminated));
    size_t taken = length < 255 ? length : 255;
    EXPECT_EQ(sent().request, message(Bytes{0} + Bytes(taken - 1, 'x') + Bytes{0}));
  }
}

TEST_F(SignalCoverage, TerminatorIsCheckedAtTheCut) {
  Bytes payload(300, 'x');
  payload[254] = 0;
  ask(Request::generic(kCoverage, payload));
  EXPECT_EQ(trace, outcome(kCoverage, 0, 300));
  EXPECT_EQ(sent().request, message(Bytes{0} + Bytes(254, 'x') + Bytes{0}));
}

TEST_F(SignalCoverage, LengthBeyondThePayloadReadsZeros) {
  for (uint32_t length : {5u, 255u, 300u, 0xFFFFFFFFu}) {
    ask(generic_claiming(length, kCoverage, text("abc")));
    EXPECT_EQ(trace, outcome(kCoverage, 0, static_cast<int>(length)));
    size_t taken = length < 255 ? length : 255;
    EXPECT_EQ(sent().request, message(Bytes{0} + text("abc") + Bytes(taken - 3)));
  }
}

TEST_F(SignalCoverage, LengthShorterThanThePayloadCutsTheText) {
  ask(generic_claiming(2, kCoverage, text("abc")));
  EXPECT_EQ(sent().request, message({0, 'a', 0}));
}

TEST_F(SignalCoverage, FailedSendGetsStatusFive) {
  fail_send(kUtilityMessage, -3);
  ask(Request::generic(kCoverage, text("abc") + Bytes{0}));
  EXPECT_EQ(trace, outcome(kCoverage, 0, 4, {}, 5));
}

TEST_F(SignalCoverage, HandlersReturnTheSendsResult) {
  Request request = Request::generic(kCoverage);
  EXPECT_EQ(handleSignalCoverage(request.data(), 0), 0);
  fail_send(kUtilityMessage, -3);
  EXPECT_EQ(handleSignalCoverage(request.data(), 0), -3);
  EXPECT_EQ(handleSignalCoverageWithMode(request.data(), 0), -3);
}

TEST_F(SignalCoverage, ReportIsForwardedWhole) {
  Bytes report = from_hex("0100 0000") + numbered(27) + Bytes{0};
  decode_to(kCoverageIndication, report);
  indicate(kCoverageIndication);
  std::string frame = generic_event("01030004", report);
  EXPECT_EQ(trace, declined(kCoverageIndication, {"call decode 0x10c", "unsol: " + frame}));
  EXPECT_EQ(frame.size(), 2u * 60);
}

TEST_F(SignalCoverage, ReportThatCannotBeDecodedIsDropped) {
  decode_to(kCoverageIndication, numbered(32));
  fail_decode(kCoverageIndication, QMI_MALFORMED_ERR);
  indicate(kCoverageIndication);
  EXPECT_EQ(trace,
            declined(kCoverageIndication,
                     {"call decode 0x10c", "log: sigcovIndHndlr: failed to decode ind data"}));
}

TEST_F(SignalCoverage, ReportWithoutMemoryIsDropped) {
  allocations_left = 0;
  indicate(kCoverageIndication);
  EXPECT_THAT(unsolicited(), IsEmpty());
}

TEST_F(SignalCoverage, ReportThatCannotBeWrittenIsLost) {
  write_errnos = {EPIPE};
  indicate(kCoverageIndication);
  EXPECT_EQ(trace,
            declined(kCoverageIndication, {"call decode 0x10c", "log: Write to parent failed 32"}));
}

}  // namespace signal_coverage_test
