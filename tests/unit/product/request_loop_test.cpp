// SPDX-License-Identifier: Apache-2.0
#include "src/host/host.h"

#include <fcntl.h>
#include <sys/select.h>
#include <unistd.h>

#include "tests/unit/product/serving_phone.h"

using testing::ElementsAre;

namespace request_loop_test {

const std::string kWaiting = "log: Child process waiting for data";
const std::string kReadFailed = "log: Read failed";

class RequestLoop : public FakePhone {
 protected:
  RequestLoop() { set_parent_pipes(kReplyFd, kUnsolicitedFd); }

  // Serves these steps of the request pipe, then its end.
  void serve(std::initializer_list<PipeStep> steps) {
    pipe = steps;
    pipe.push_back({});
    serve_requests(kRequestFd);
  }

  // The trace between the first wait and the end of the pipe.
  std::vector<std::string> served() const {
    EXPECT_GE(trace.size(), 4u);
    EXPECT_EQ(trace.front(), kWaiting);
    std::vector<std::string> end(trace.end() - 3, trace.end());
    EXPECT_THAT(end, ElementsAre(kWaiting, "log: Read 0 bytes from pipe",
                                 "log: Buffer length is zero..Exiting QOREXT"));
    return {trace.begin() + 1, trace.end() - 3};
  }
};

TEST_F(RequestLoop, EndOfThePipeEndsTheLoop) {
  serve({});
  EXPECT_THAT(trace, ElementsAre(kWaiting, "log: Read 0 bytes from pipe",
                                 "log: Buffer length is zero..Exiting QOREXT"));
}

TEST_F(RequestLoop, InterruptedSelectWaitsAgain) {
  serve({{.select_result = -1, .select_errno = EINTR}});
  EXPECT_THAT(served(), ElementsAre("log:  Got EINTR, ignoring", kReadFailed));
}

TEST_F(RequestLoop, FailedSelectIsLoggedAndTriedAgain) {
  for (int failure : {ENOMEM, EAGAIN, EBADF}) {
    trace.clear();
    serve({{.select_result = -1, .select_errno = failure}});
    std::string line = "log: Select failed with errno = " + std::to_string(failure) + ".";
    EXPECT_THAT(served(), ElementsAre(line, kReadFailed));
  }
}

// Sets every bit of the stack that the next calls use.
__attribute__((noinline)) void fill_stack() {
  volatile uint8_t bytes[4096];
  for (volatile uint8_t& byte : bytes) byte = 0xFF;
}

// The scripted select() checks its set.
TEST_F(RequestLoop, SelectWaitsForTheRequestPipeOnly) {
  pipe = {{.select_result = -1, .select_errno = EINTR}, {}};
  fill_stack();
  serve_requests(kRequestFd);
  EXPECT_EQ(trace.size(), 6u);
}

TEST_F(RequestLoop, SelectOfZeroIsLogged) {
  serve({{.select_result = 0}});
  EXPECT_THAT(served(), ElementsAre("log: select returned zero", kReadFailed));
}

TEST_F(RequestLoop, SelectWithoutTheDescriptorIsLogged) {
  serve({{.select_result = 1, .is_set = false}});
  EXPECT_THAT(served(),
              ElementsAre("log: select succeed, fd failed, should not happen", kReadFailed));
}

TEST_F(RequestLoop, FailedReadIsLoggedAndTriedAgain) {
  for (int failure : {EIO, EINTR, EAGAIN}) {
    trace.clear();
    serve({{.read_errno = failure}});
    std::string line = "log: Dispatcher: read failed with errno " + std::to_string(failure);
    EXPECT_THAT(served(), ElementsAre(line, kReadFailed));
  }
}

TEST_F(RequestLoop, SevenBytesAreAWrongMessage) {
  serve({{.data = from_hex("16000002 000000")}});
  EXPECT_THAT(served(),
              ElementsAre("log: Read 7 bytes from pipe", "log: getOemHook: NULL DATA or check size",
                          "log: msg Id is 0xffffffff, type is 0. ", "log: Wrong msg Id",
                          "reply: 16000002FFFFFFFF"));
}

TEST_F(RequestLoop, ErrorReplyToOneByteIsPaddedWithZeros) {
  serve({{.data = {0x77}}});
  EXPECT_THAT(replies(), ElementsAre("77000000FFFFFFFF"));
}

TEST_F(RequestLoop, UnidentifiedRequestIsAWrongMessage) {
  serve({{.data = from_hex("05000001 00000000")}});
  EXPECT_THAT(served(), ElementsAre("log: Read 8 bytes from pipe",
                                    "log: getOemHook: UNABLE TO IDENTIFY OEM_HOOK REQUEST!",
                                    "log: msg Id is 0xffffffff, type is 0. ", "log: Wrong msg Id",
                                    "reply: 05000001FFFFFFFF"));
}

TEST_F(RequestLoop, GenericRequestIsParsedAndDispatched) {
  serve({{.data = from_hex("01050506 00000203 0000")}});
  EXPECT_THAT(served(),
              ElementsAre("log: Read 10 bytes from pipe", "log: msg Id is 0x50506, type is 1. ",
                          "log: Received Generic Hook request 0x60505",
                          "debug: handle generic request, msgID 0x50506. msgLen 515, msgType 1",
                          "log: 0x60505 not supported", "reply: 01050506FFFFFFFF"));
}

TEST_F(RequestLoop, GenericIdIsLoggedWithItsSignShiftedIn) {
  serve({{.data = from_hex("010505F6 00000000")}});
  EXPECT_THAT(logs(), testing::Contains("Received Generic Hook request 0xfff60505"));
}

TEST_F(RequestLoop, CdmaRequestIsOfferedToTheCarrierFirst) {
  serve({{.data = from_hex("0B000002 00000000")}});
  EXPECT_THAT(served(),
              ElementsAre("log: Read 8 bytes from pipe", "log: msg Id is 0x200000b, type is 0. ",
                          "log: Received CDMA Hook request 0x200000b",
                          "log: qorext_hook_sprint_handler: ENTER ",
                          "log: qorext_hook_sprint_handler: Unexpected MSG ID: 33554443",
                          "log: 0x200000b not supported by Sprint handler.",
                          "log: 0x200000b not supported", "reply: " + reply(0x0200000B, 6)));
}

TEST_F(RequestLoop, LargestRequestIsReadInOnePiece) {
  Bytes request(kRequestSize, 0xEE);
  store_le32(request.data(), 0x0200000B);
  serve({{.data = request}});
  EXPECT_THAT(logs(), testing::Contains("Read 17408 bytes from pipe"));
  EXPECT_THAT(replies(), ElementsAre(reply(0x0200000B, 6)));
}

TEST_F(RequestLoop, OneReadIsLimitedTo17408Bytes) {
  serve({{.data = Bytes(20000, 0xEE)}});
  EXPECT_THAT(logs(), testing::Contains("Read 17408 bytes from pipe"));
}

TEST_F(RequestLoop, LaterRequestSeesNothingOfAnEarlierOne) {
  qmi_qorext_hook_client_init(handleUnsolMsg);
  Bytes claims_more = le32(0x02000008) + le32(512) + Bytes(10) + from_hex("01020304");
  serve({{.data = Bytes(kRequestSize, 0xEE)}, {.data = claims_more}});
  ASSERT_EQ(exchanges.size(), 1u);
  Bytes written(exchanges[0].request.begin() + 20, exchanges[0].request.end());
  EXPECT_EQ(written, from_hex("01020304") + Bytes(508));
}

// The scripted read() checks its buffer.
TEST_F(RequestLoop, CompleteBufferIsZeroedBeforeEachRead) {
  Bytes request(kRequestSize, 0xEE);
  serve({{.data = request}, {.data = {0x77}}, {.data = request}});
  EXPECT_EQ(replies().size(), 3u);
}

TEST_F(RequestLoop, SecondRequestInOneReadIsIgnored) {
  serve({{.data = from_hex("0B000002 00000000 0B000002 00000000")}});
  EXPECT_THAT(replies(), ElementsAre(reply(0x0200000B, 6)));
}

TEST_F(RequestLoop, ClosedReplyPipeDoesNotEndTheLoop) {
  write_errnos = {EPIPE};
  serve({{.data = from_hex("05000001 00000000")}, {.data = from_hex("0B000002 00000000")}});
  EXPECT_THAT(logs(), testing::Contains("Write to parent failed 32").Times(2));
  EXPECT_EQ(trace.back(), "log: Buffer length is zero..Exiting QOREXT");
}

TEST_F(RequestLoop, DescriptorZeroIsServed) {
  int standard_input = dup(STDIN_FILENO);
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  close(ends[1]);
  dup2(ends[0], STDIN_FILENO);
  close(ends[0]);
  serve_requests(STDIN_FILENO);
  dup2(standard_input, STDIN_FILENO);
  close(standard_input);
  EXPECT_THAT(trace, ElementsAre(kWaiting, "log: Read 0 bytes from pipe",
                                 "log: Buffer length is zero..Exiting QOREXT"));
}

// The loop does not end on such a descriptor: its process ends after two rounds.
TEST_F(RequestLoop, DescriptorOutsideTheSetFailsLikeAClosedOne) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  std::string turn =
      "log: Child process waiting for data\n"
      "log: Select failed with errno = 9.\n"
      "log: Read failed\n";
  exit_after_lines = 6;
  EXPECT_EXIT(serve_requests(FD_SETSIZE), testing::ExitedWithCode(0), turn + turn);
  EXPECT_EXIT(serve_requests(-7), testing::ExitedWithCode(0), turn + turn);
}

}  // namespace request_loop_test
