// SPDX-License-Identifier: Apache-2.0
// The start of the daemon until it serves, and its end.
#include <unistd.h>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/handset_fixture.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

// Expects the log to contain all of `wanted` in this order, possibly with others in between.
void expect_in_order(const Texts& log, const Texts& wanted) {
  size_t found = 0;
  for (const std::string& text : log) {
    if (found < wanted.size() && text == wanted[found]) ++found;
  }
  EXPECT_EQ(found, wanted.size()) << "missing, or out of order: " << wanted[found];
}

const Texts kModemIsFound = {
    "Starting qorext_client",
    "sprint_client_init: qmi_client_notifier_init ",
    "sprint_client_init: qmi_client_get_service_list() returned 0 num_services = 1",
    "sprint_client_init: qmi_client_get_service_list() returned 0 num_entries = 1 num_services = 1",
    "sprint_client_init: NAS",
    "sprint_client_init Succeeded",
    "qmi_qorext_sprint_client_init: NAS Client Init rc: 0",
    "sprint_client_init: qmi_client_notifier_init ",
    "sprint_client_init: qmi_client_get_service_list() returned 0 num_services = 1",
    "sprint_client_init: qmi_client_get_service_list() returned 0 num_entries = 1 num_services = 1",
    "sprint_client_init: DMS",
    "sprint_client_init Succeeded",
    "qmi_qorext_sprint_client_init: DMS Client Init rc: 0",
    "qmi_qorext_hook_client_init: qorext_hook_get_serivce_object",
    "qmi_qorext_hook_client_init: qmi_client_notifier_init ",
    "qmi_qorext_hook_client_init: qmi_client_get_service_list() returned 0 num_services = 1",
    "qmi_qorext_hook_client_init: qmi_client_get_service_list() returned 0 num_entries = 1 "
    "num_services = 1",
    "qmi_qorext_hook_client_init Succeeded"};

const Texts kVersionsAreRead = {
    "NV Read with RDE index (8029), recordNum(0), offset(0).",
    "NV Read 8029, length 17, data length 17, grde - 514F522D4653472D30312E30322E303300",
    "qor_qmi_read_baseband_config_version: fsg version NV read status(0)",
    "NV Read with RDE index (8028), recordNum(0), offset(0).",
    "NV Read 8028, length 18, data length 18, grde - 514F522D464C45582D30342E30352E303600",
    "qor_qmi_read_baseband_config_version: flex nv status(0)"};

const Texts kSoftwareVersionIsWritten = {
    "IMEI_SV number update  7",
    "NV Write with RDE index 41, record number 0, offset 0.",
    "qor_qmi_sprint_rde_write: hexdump len 1...",
    "HexDump: Data 07",
    "NV Write success for element 41",
    "IMEI_SV property write status if 0-success else failure return 0"};

const Texts kBandsAreRead = {"NV Read with RDE index (53), recordNum(0), offset(0).",
                             "NV Read 53, length 8, data length 8, grde - 0800000300000000",
                             "Child process waiting for data"};

class Startup : public testing::Test {
 protected:
  Texts start(unsigned instance) {
    handset.start_modem();
    return handset.start_serving(instance);
  }
  // The requests that read or write NV items.
  Texts item_requests() {
    Texts requests = handset.modem_requests();
    std::erase_if(requests, [](const std::string& request) {
      return !request.starts_with("qorext element_");
    });
    return requests;
  }
  std::string property(const char* name) { return handset.phone().property(name); }

  Handset handset{Handset::off};
};

TEST_F(Startup, LogsItsStepsInOrder) {
  handset.phone().set_property("ro.radio.imei.sv", "07");
  expect_in_order(start(0),
                  kModemIsFound + kVersionsAreRead + kSoftwareVersionIsWritten + kBandsAreRead);
}

TEST_F(Startup, PublishesTheModemsConfigurationAsProperties) {
  start(0);
  EXPECT_EQ(property("ril.baseband.config.ver_num"), "01.02.03");
  EXPECT_EQ(property("ril.baseband.config.version"), "QOR-FLEX-04.05.06");
  EXPECT_EQ(property("ril.lte.bc.config"), "50331656");
  EXPECT_THAT(item_requests(),
              ElementsAre(element_read(8029), element_read(8028), element_read(53)));
}

TEST_F(Startup, WritesTheSoftwareVersionOfTheImeiToTheModem) {
  handset.phone().set_property("ro.radio.imei.sv", "7");
  start(0);
  EXPECT_THAT(item_requests(), ElementsAre(element_read(8029), element_read(8028),
                                           element_write(41, {0x07}), element_read(53)));
}

TEST_F(Startup, OfAnotherInstancePublishesOnlyTheBands) {
  handset.phone().set_property("ro.radio.imei.sv", "7");
  expect_in_order(start(1), kModemIsFound + kBandsAreRead);
  EXPECT_EQ(property("ril.baseband.config.ver_num"), "(none)");
  EXPECT_EQ(property("ril.baseband.config.version"), "(none)");
  EXPECT_EQ(property("ril.lte.bc.config"), "50331656");
  EXPECT_THAT(item_requests(), ElementsAre(element_read(53)));
  EXPECT_THAT(handset.log().texts(), Not(Contains(StartsWith("IMEI_SV"))));
}

TEST_F(Startup, PublishesUnknownWhenTheModemHasNoVersion) {
  handset.start_modem();
  handset.modem().command(R"(set nv=[{"rde_id":8029,"absent":true}])");
  handset.start_serving();
  EXPECT_EQ(property("ril.baseband.config.ver_num"), "Unknown");
  EXPECT_EQ(property("ril.baseband.config.version"), "QOR-FLEX-04.05.06");
}

TEST_F(Startup, BecomesTheRadioUserWhenStartedByRoot) {
  start(0);
  uid_t user = geteuid() == 0 ? 1001 : geteuid();
  std::string status = fmt::format("/proc/{}/status", handset.pid());
  EXPECT_THAT(lines_of(content_of(status)),
              Contains(fmt::format("Uid:\t{0}\t{0}\t{0}\t{0}", user)));
}

TEST_F(Startup, EndOfFileEndsTheDaemonWithStatusZero) {
  start(0);
  EXPECT_THAT(handset.end_of_file(),
              ElementsAre("Read 0 bytes from pipe", "Buffer length is zero..Exiting QOREXT"));
  EXPECT_EQ(handset.exit_status(), "exit status 0");
}

// Runs the daemon to its end with these arguments.
class Arguments : public testing::Test {
 protected:
  Texts run(const std::vector<std::string>& arguments) {
    auto output = qorextctl::make_pipe().value();
    qorextctl::Launch launch;
    launch.arguments = {phone.program("qorext_client")};
    launch.arguments.insert(launch.arguments.end(), arguments.begin(), arguments.end());
    launch.environment = {{"QOREXT_MODEM", phone.modem()},
                          {"QOREXT_PHONE_ROOT", phone.daemon_root()}};
    launch.output = output.write.get();
    DaemonLog log;
    qorextctl::LogCapture capture([&log](const std::string& line) { log.add(line); });
    auto process = qorextctl::Process::start(launch);
    output.write.reset();
    capture.start(std::move(output.read));
    auto status = process->wait(time_limit());
    capture.wait_end(time_limit());
    EXPECT_EQ(status ? describe(*status) : "still running", "exit status 0");
    return log.texts();
  }

  PhoneRoot phone;
};

TEST_F(Arguments, TooFewEndItWithStatusZero) {
  EXPECT_THAT(run({}), ElementsAre("Starting qorext_client", "Need 4 args 1"));
  EXPECT_THAT(run({"3", "4"}), ElementsAre("Starting qorext_client", "Need 4 args 3"));
}

TEST_F(Arguments, ADescriptorOfMinusOneEndsItWithStatusZero) {
  EXPECT_THAT(
      run({"-1", "4", "5", "0"}),
      ElementsAre("Starting qorext_client",
                  "readfd=-1, writefd=4, writeunsolfd=5 qor_ext_instance_id=0", "Invalid fds"));
  EXPECT_THAT(
      run({"3", "-1", "5", "1"}),
      ElementsAre("Starting qorext_client",
                  "readfd=3, writefd=-1, writeunsolfd=5 qor_ext_instance_id=1", "Invalid fds"));
  EXPECT_THAT(
      run({"3", "4", "-1", "0"}),
      ElementsAre("Starting qorext_client",
                  "readfd=3, writefd=4, writeunsolfd=-1 qor_ext_instance_id=0", "Invalid fds"));
}

TEST_F(Arguments, ThreeAreEnough) {
  EXPECT_THAT(
      run({"3", "4", "-1"}),
      ElementsAre("Starting qorext_client",
                  "readfd=3, writefd=4, writeunsolfd=-1 qor_ext_instance_id=0", "Invalid fds"));
}

}  // namespace
}  // namespace e2e
