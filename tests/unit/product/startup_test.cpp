// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "tests/unit/product/capture_phone.h"
#include "tests/unit/product/fake_phone.h"
#include "tests/unit/product/serving_phone.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;

int qorext_client_main(int argc, char** argv);

namespace startup_test {

class StartUp : public CapturePhone {
 protected:
  ~StartUp() override { qor_ext_instance_id = 0; }

  static int start(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "qorext_client");
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    return qorext_client_main(argc, argv.data());
  }

  // Starts with an empty request pipe.
  int start_normally(const std::string& instance = "0") {
    pipe = {{}};
    return start({"600", "601", "602", instance});
  }
};

TEST_F(StartUp, TooFewArgumentsEndTheProgram) {
  EXPECT_EQ(start({"600", "601"}), 0);
  EXPECT_THAT(trace,
              ElementsAre("log: Starting qorext_client", "call setuid 1001", "log: Need 4 args 3"));
}

TEST_F(StartUp, ThreeArgumentsAreAccepted) {
  pipe = {{}};
  EXPECT_EQ(start({"600", "601", "602"}), 0);
  EXPECT_EQ(qor_ext_instance_id, 0u);
  EXPECT_THAT(logs(), Contains("Child process waiting for data"));
}

TEST_F(StartUp, DescriptorOfMinusOneEndsTheProgram) {
  for (int bad = 0; bad < 3; ++bad) {
    trace.clear();
    std::vector<std::string> arguments = {"600", "601", "602", "0"};
    arguments[static_cast<size_t>(bad)] = "-1";
    EXPECT_EQ(start(arguments), 0);
    EXPECT_EQ(trace.back(), "log: Invalid fds");
    EXPECT_EQ(trace.size(), 4u);
  }
}

TEST_F(StartUp, OtherNegativeDescriptorsAreAccepted) {
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

TEST_F(StartUp, ArgumentsEndAtTheFirstOtherCharacter) {
  pipe = {{}};
  start({"0600", "601x", " 602", "-1"});
  EXPECT_EQ(logs()[1], "readfd=600, writefd=601, writeunsolfd=602 qor_ext_instance_id=-1");
}

TEST_F(StartUp, ArgumentsWithLeadingZerosAreDecimal) {
  pipe = {{}};
  start({"0600", "010", "-011", "012"});
  EXPECT_EQ(logs()[1], "readfd=600, writefd=10, writeunsolfd=-11 qor_ext_instance_id=12");
  EXPECT_EQ(qor_ext_instance_id, 12u);
}

TEST_F(StartUp, HexadecimalArgumentsEndAtTheirLetter) {
  start({"-1", "0x10", "0xB", "0xC"});
  EXPECT_EQ(logs()[1], "readfd=-1, writefd=0, writeunsolfd=0 qor_ext_instance_id=0");
}

TEST_F(StartUp, EachPipeHasItsFrames) {
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

// The parent shares their flags: a change here would change its ends as well.
TEST_F(StartUp, FlagsOfThePipesAreNotChanged) {
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

TEST_F(StartUp, CarrierClientsAreOpenedBeforeTheVendorClient) {
  EXPECT_EQ(start_normally(), 0);
  Lines clients;
  for (const std::string& line : trace) {
    if (line.rfind("call client_init", 0) == 0) clients.push_back(line);
  }
  EXPECT_THAT(clients, ElementsAre("call client_init nas", "call client_init dms",
                                   "call client_init vendor"));
}

TEST_F(StartUp, FailedCarrierClientEndsTheProgram) {
  init_results = {-7};
  EXPECT_EQ(start_normally(), 0);
  ASSERT_GE(trace.size(), 2u);
  EXPECT_EQ(trace[trace.size() - 2], "log: qmi_qorext_sprint_client_init: NAS Client Init rc: -7");
  EXPECT_EQ(trace.back(), "log: main:qmi_qorext_sprint_client_init failed = -7");
  EXPECT_THAT(trace, Not(Contains("call client_init dms")));
}

TEST_F(StartUp, FailedVendorClientEndsTheProgram) {
  init_results = {0, 0, -7};
  EXPECT_EQ(start_normally(), 0);
  ASSERT_GE(trace.size(), 2u);
  EXPECT_EQ(trace[trace.size() - 2], "call release notifier");
  EXPECT_EQ(trace.back(), "log: main:qmi_qorext_hook_client_t failed = -1");
}

TEST_F(StartUp, EndOfThePipeReturnsStatusZero) {
  EXPECT_EQ(start_normally(), 0);
  EXPECT_EQ(trace.back(), "log: Buffer length is zero..Exiting QOREXT");
}

// The messages of main to the modem before it serves requests.
class StartUpNotices : public StartUp {
 protected:
  StartUpNotices() { properties["ro.radio.imei.sv"] = "7"; }

  // The exchanges in order: "0xMESSAGE", with the first word of the request where it has one.
  std::vector<std::string> start(const std::string& instance) {
    trace.clear();
    exchanges.clear();
    EXPECT_EQ(start_normally(instance), 0);

    std::vector<std::string> sent;
    for (const Exchange& exchange : exchanges) {
      char line[32];
      int length = snprintf(line, sizeof line, "0x%x", exchange.id);
      if (exchange.request.size() >= 4) {
        snprintf(line + length, sizeof line - static_cast<size_t>(length), " %u",
                 load_le32(exchange.request.data()));
      }
      sent.emplace_back(line);
    }
    return sent;
  }

  void put_kernel_panic() const { put("/proc/bootinfo", "POWERUPREASON : 0x00020000\n"); }
};

TEST_F(StartUpNotices, PrimaryInstanceReportsThePanicThenTheItemsThenReady) {
  put_kernel_panic();
  EXPECT_THAT(start("0"), ElementsAre("0xf 4", "0x8 8029", "0x8 8028", "0x9 41", "0x8 53", "0x13"));
  EXPECT_EQ(exchanges.back().request, Bytes{0xFF});
}

TEST_F(StartUpNotices, OtherInstancesReportThePanicAndPublishTheBandClassOnly) {
  put_kernel_panic();
  EXPECT_THAT(start("1"), ElementsAre("0xf 4", "0x8 53"));
  EXPECT_THAT(logs(),
              Not(Contains("dhob_write: Sending ready to received indications message to BP")));
}

TEST_F(StartUpNotices, OnlyInstanceZeroIsThePrimaryOne) {
  for (const char* instance : {"256", "65536", "-256", "16777216"}) {
    EXPECT_THAT(start(instance), ElementsAre("0x8 53")) << instance;
  }
}

TEST_F(StartUpNotices, BootWithoutAPanicSendsNoNotice) {
  EXPECT_THAT(start("0"), ElementsAre("0x8 8029", "0x8 8028", "0x9 41", "0x8 53", "0x13"));
  EXPECT_THAT(trace, Contains("debug: notify_auto_verify_sim_pin from AP NOT called"));
}

TEST_F(StartUpNotices, PanicIsCheckedAfterAllClientsAreOpenAndBeforeAnyItem) {
  start("0");
  auto probe = std::find(trace.begin(), trace.end(), "debug: is_modem_panic looking for BP Panic");
  ASSERT_NE(probe, trace.end());
  std::vector<std::string> before(trace.begin(), probe);
  std::vector<std::string> after(probe, trace.end());
  EXPECT_THAT(before, Contains("log: qmi_qorext_hook_client_init Succeeded\n"));
  EXPECT_THAT(before, Not(Contains(testing::StartsWith("send "))));
  EXPECT_THAT(after, IsSupersetOf({"send vendor 0x8", "log: Child process waiting for data"}));
}

TEST_F(StartUpNotices, FailedNoticeIsAWarningAndStartUpContinues) {
  put_kernel_panic();
  fail_send(0x0F, -2);
  EXPECT_THAT(start("0"), ElementsAre("0xf 4", "0x8 8029", "0x8 8028", "0x9 41", "0x8 53", "0x13"));
  auto sent = std::find(trace.begin(), trace.end(), "send vendor 0xf");
  ASSERT_NE(sent, trace.end());
  EXPECT_EQ(*(sent + 1), "log: [Warning] Failed notify the auto verify SIM PIN to BP");
  EXPECT_THAT(logs(), Contains("Child process waiting for data"));
}

// The trace of reading an empty item.
Lines empty_item(int id) {
  return {"log: NV Read with RDE index (" + std::to_string(id) + "), recordNum(0), offset(0).",
          "send vendor 0x8", "log: NV Read 0, length 0, data length 0, grde - "};
}

TEST_F(StartUpNotices, EveryLineOfTheStartUpIsLogged) {
  const std::string kConfig = "qor_qmi_read_baseband_config_version: ";
  const Lines kWarned = {"debug: is_kernel_panic looking for POWERUPREASON",
                         "debug: is_kernel_panic POWERUPREASON=0x00020000",
                         "debug: notify_auto_verify_sim_pin from AP called", "send vendor 0xf",
                         "log: [Warning] Failed notify the auto verify SIM PIN to BP"};
  const Lines kPublished =
      empty_item(8029) +
      Lines{"log: " + kConfig + "fsg version NV read status(0)",
            "log: " + kConfig + "no valid delimiter in ",
            "call property_set ril.baseband.config.ver_num=Unknown"} +
      empty_item(8028) +
      Lines{"log: " + kConfig + "flex nv status(0)",
            "call property_set ril.baseband.config.version=",
            "log: IMEI_SV number update  7",
            "log: NV Write with RDE index 41, record number 0, offset 0.",
            "log: qor_qmi_sprint_rde_write: hexdump len 1...",
            "log: HexDump: Data 07",
            "send vendor 0x9",
            "log: NV Write success for element 41",
            "log: IMEI_SV property write status if 0-success else failure return 0\n"};
  const Lines kBandClass = empty_item(53) + Lines{"call property_set ril.lte.bc.config=0"};
  const Lines kReady = {"log: dhob_write: Sending ready to received indications message to BP",
                        "send vendor 0x13"};
  const Lines kServed = {"log: Child process waiting for data", "log: Read 0 bytes from pipe",
                         "log: Buffer length is zero..Exiting QOREXT"};
  put_kernel_panic();
  fail_send(0x0F, -2);
  for (std::string instance : {"0", "1"}) {
    start(instance);
    auto up = std::find(trace.begin(), trace.end(), "log: qmi_qorext_hook_client_init Succeeded\n");
    ASSERT_NE(up, trace.end());
    Lines expected = instance == "0" ? kWarned + kPublished + kBandClass + kReady + kServed
                                     : kWarned + kBandClass + kServed;
    EXPECT_EQ(Lines(up + 1, trace.end()), expected);
    Lines first(trace.begin(), trace.begin() + 4);
    EXPECT_THAT(first, ElementsAre("log: Starting qorext_client", "call setuid 1001",
                                   "log: readfd=600, writefd=601, writeunsolfd=602 "
                                   "qor_ext_instance_id=" +
                                       instance,
                                   "call nas_get_service_object 1 175 6"));
  }
}

TEST_F(StartUpNotices, SentNoticeLogsNoWarning) {
  put_kernel_panic();
  start("0");
  EXPECT_THAT(logs(), Not(Contains("[Warning] Failed notify the auto verify SIM PIN to BP")));
}

TEST_F(StartUpNotices, ReadyNoticeThatCannotBeSentIsIgnored) {
  fail_send(0x13, -2);
  start("0");
  EXPECT_EQ(trace.back(), "log: Buffer length is zero..Exiting QOREXT");
}

TEST_F(StartUpNotices, RefusedItemsDoNotEndTheStartUp) {
  const Bytes kRefusal = le32(1) + le32(16);
  answer(8, kRefusal);
  answer(9, kRefusal);
  EXPECT_THAT(start("0"), ElementsAre("0x8 8029", "0x8 8028", "0x9 41", "0x8 53", "0x13"));
  EXPECT_THAT(
      trace, IsSupersetOf({"call property_set ril.baseband.config.ver_num=Unknown",
                           "log: IMEI_SV number update  7", "call property_set ril.lte.bc.config=0",
                           "log: Child process waiting for data"}));
  EXPECT_EQ(properties.count("ril.baseband.config.version"), 0u);
}

TEST_F(StartUpNotices, ItemsArePublishedAsProperties) {
  answer(8, read_answer(53, 4, text("A-1") + Bytes{0}));
  start("0");
  EXPECT_EQ(properties["ril.baseband.config.ver_num"], "1");
  EXPECT_EQ(properties["ril.baseband.config.version"], "A-1");
  EXPECT_EQ(properties["ril.lte.bc.config"], std::to_string(0x00312D41));
}

}  // namespace startup_test
