// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "src/host/base/parent.h"
#include "tests/unit/product/fake_phone.h"

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

int qorext_client_main(int argc, char** argv);

namespace {

class StartUp : public FakePhone {
 protected:
  int start(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "qorext_client");
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    return qorext_client_main(argc, argv.data());
  }

  int start_normally(const std::string& instance = "0") {
    pipe = {{}};
    return start({"600", "601", "602", instance});
  }
};

TEST_F(StartUp, TooFewArgumentsEndIt) {
  EXPECT_EQ(start({"600", "601"}), 0);
  EXPECT_THAT(trace,
              ElementsAre("log: Starting qorext_client", "call setuid 1001", "log: Need 4 args 3"));
}

TEST_F(StartUp, ThreeArgumentsPassTheCheck) {
  pipe = {{}};
  EXPECT_EQ(start({"600", "601", "602"}), 0);
  EXPECT_EQ(qor_ext_instance_id, 0u);
  EXPECT_THAT(logs(), Contains("Child process waiting for data"));
}

TEST_F(StartUp, DescriptorOfMinusOneEndsIt) {
  for (int bad = 0; bad < 3; ++bad) {
    trace.clear();
    std::vector<std::string> arguments = {"600", "601", "602", "0"};
    arguments[static_cast<size_t>(bad)] = "-1";
    EXPECT_EQ(start(arguments), 0);
    EXPECT_EQ(trace.back(), "log: Invalid fds");
    EXPECT_EQ(trace.size(), 4u);
  }
}

TEST_F(StartUp, OtherNegativeDescriptorsPass) {
  pipe = {{}};
  EXPECT_EQ(start({"600", "-2", "-3", "0"}), 0);
  EXPECT_THAT(logs(), Not(Contains("Invalid fds")));
  EXPECT_THAT(logs(), Contains("Child process waiting for data"));
}

TEST_F(StartUp, ArgumentsAreDecimalAndLogged) {
  start_normally("7");
  EXPECT_EQ(qor_ext_instance_id, 7u);
  EXPECT_EQ(logs()[1], "readfd=600, writefd=601, writeunsolfd=602 qor_ext_instance_id=7");
}

TEST_F(StartUp, ArgumentsAreTakenAsFarAsTheyAreNumbers) {
  pipe = {{}};
  start({"0600", "601x", " 602", "-1"});
  EXPECT_EQ(logs()[1], "readfd=600, writefd=601, writeunsolfd=602 qor_ext_instance_id=-1");
}

TEST_F(StartUp, ArgumentsWithLeadingZerosAreDecimalToo) {
  pipe = {{}};
  start({"0600", "010", "-011", "012"});
  EXPECT_EQ(logs()[1], "readfd=600, writefd=10, writeunsolfd=-11 qor_ext_instance_id=12");
  EXPECT_EQ(qor_ext_instance_id, 12u);
}

TEST_F(StartUp, HexadecimalArgumentsEndAtTheirLetter) {
  start({"-1", "0x10", "0xB", "0xC"});
  EXPECT_EQ(logs()[1], "readfd=-1, writefd=0, writeunsolfd=0 qor_ext_instance_id=0");
}

TEST_F(StartUp, EachPipeHasItsUse) {
  int ends[3][2];
  for (auto& pair : ends) ASSERT_EQ(pipe2(pair, O_CLOEXEC), 0);
  auto& [request, reply, unsolicited] = ends;
  ASSERT_EQ(write(request[1], "\5\0\0\1\0\0\0", 8), 8);
  close(request[1]);
  start(
      {std::to_string(request[0]), std::to_string(reply[1]), std::to_string(unsolicited[1]), "0"});
  writeUnsolToParent("unsolicited", 11);
  uint8_t frame[20] = {};
  EXPECT_EQ(read(reply[0], frame, sizeof frame), 8);
  EXPECT_EQ(hex({frame, 8}), "05000001FFFFFFFF");
  EXPECT_EQ(read(unsolicited[0], frame, sizeof frame), 11);
  for (int fd : {request[0], reply[0], reply[1], unsolicited[0], unsolicited[1]}) close(fd);
}

// The parent shares their state: what is set here would change its ends, too.
TEST_F(StartUp, PipesAreTakenAsTheyAre) {
  int request[2];
  int frames[2];
  ASSERT_EQ(pipe2(request, O_CLOEXEC), 0);
  ASSERT_EQ(pipe2(frames, O_CLOEXEC), 0);
  int unsolicited = dup(frames[1]);
  close(request[1]);
  EXPECT_EQ(start({std::to_string(request[0]), std::to_string(frames[1]),
                   std::to_string(unsolicited), "0"}),
            0);
  EXPECT_EQ(fcntl(request[0], F_GETFL), O_RDONLY);
  EXPECT_EQ(fcntl(frames[1], F_GETFL), O_WRONLY);
  for (int fd : {request[0], frames[0], frames[1], unsolicited}) close(fd);
}

TEST_F(StartUp, SignalOfAClosedPipeIsIgnored) {
  ::signal(SIGPIPE, SIG_DFL);
  start_normally();
  EXPECT_EQ(::signal(SIGPIPE, SIG_IGN), SIG_IGN);
}

TEST_F(StartUp, CarrierClientsComeBeforeTheVendorClient) {
  EXPECT_EQ(start_normally(), 0);
  std::vector<std::string> opened;
  for (const std::string& line : trace) {
    if (line.rfind("call client_init", 0) == 0) opened.push_back(line);
  }
  EXPECT_THAT(opened, ElementsAre("call client_init nas", "call client_init dms",
                                  "call client_init vendor"));
}

TEST_F(StartUp, FailedCarrierClientEndsIt) {
  init_results = {-7};
  EXPECT_EQ(start_normally(), 0);
  ASSERT_GE(trace.size(), 2u);
  EXPECT_EQ(trace[trace.size() - 2], "log: qmi_qorext_sprint_client_init: NAS Client Init rc: -7");
  EXPECT_EQ(trace.back(), "log: main:qmi_qorext_sprint_client_init failed = -7");
  EXPECT_THAT(trace, Not(Contains("call client_init dms")));
}

TEST_F(StartUp, FailedVendorClientEndsIt) {
  init_results = {0, 0, -7};
  EXPECT_EQ(start_normally(), 0);
  ASSERT_GE(trace.size(), 2u);
  EXPECT_EQ(trace[trace.size() - 2], "call release notifier");
  EXPECT_EQ(trace.back(), "log: main:qmi_qorext_hook_client_t failed = -1");
}

TEST_F(StartUp, EndOfThePipeGivesStatusZero) {
  EXPECT_EQ(start_normally(), 0);
  EXPECT_EQ(trace.back(), "log: Buffer length is zero..Exiting QOREXT");
}

}  // namespace
