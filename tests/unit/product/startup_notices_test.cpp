// SPDX-License-Identifier: Apache-2.0
#include "src/host/base/bytes.h"
#include "src/host/base/parent.h"
#include "tests/unit/product/capture_phone.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;

int qorext_client_main(int argc, char** argv);

namespace {

// What main tells and asks the modem before it serves requests.
class StartUpNotices : public CapturePhone {
 protected:
  StartUpNotices() { properties["ro.radio.imei.sv"] = "7"; }
  ~StartUpNotices() override { qor_ext_instance_id = 0; }

  // The exchanges in order: "0xMESSAGE", with the first word of the request where it has one.
  std::vector<std::string> start(std::string instance) {
    std::string arguments[] = {"qorext_client", "600", "601", "602", std::move(instance)};
    char* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(),
                    arguments[3].data(), arguments[4].data(), nullptr};
    pipe = {{}};
    EXPECT_EQ(qorext_client_main(5, argv), 0);

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

TEST_F(StartUpNotices, PrimaryInstanceTellsThePanicThenItemsThenThatItIsReady) {
  put_kernel_panic();
  EXPECT_THAT(start("0"), ElementsAre("0xf 4", "0x8 8029", "0x8 8028", "0x9 41", "0x8 53", "0x13"));
  EXPECT_EQ(exchanges.back().request, Bytes{0xFF});
}

TEST_F(StartUpNotices, OtherInstancesTellThePanicAndPublishTheBandClassOnly) {
  put_kernel_panic();
  EXPECT_THAT(start("1"), ElementsAre("0xf 4", "0x8 53"));
  EXPECT_THAT(logs(),
              Not(Contains("dhob_write: Sending ready to received indications message to BP")));
}

TEST_F(StartUpNotices, OnlyInstanceZeroIsThePrimaryOne) {
  for (const char* instance : {"256", "65536", "-256", "16777216"}) {
    exchanges.clear();
    EXPECT_THAT(start(instance), ElementsAre("0x8 53")) << instance;
  }
}

TEST_F(StartUpNotices, BootWithoutAPanicSendsNoNotice) {
  EXPECT_THAT(start("0"), ElementsAre("0x8 8029", "0x8 8028", "0x9 41", "0x8 53", "0x13"));
  EXPECT_THAT(trace, Contains("debug: notify_auto_verify_sim_pin from AP NOT called"));
}

TEST_F(StartUpNotices, PanicIsLookedForAfterBothClientsAreUpAndBeforeAnyItem) {
  start("0");
  auto probe = std::find(trace.begin(), trace.end(), "debug: is_modem_panic looking for BP Panic");
  ASSERT_NE(probe, trace.end());
  std::vector<std::string> before(trace.begin(), probe);
  std::vector<std::string> after(probe, trace.end());
  EXPECT_THAT(before, Contains("log: qmi_qorext_hook_client_init Succeeded\n"));
  EXPECT_THAT(before, Not(Contains(testing::StartsWith("send "))));
  EXPECT_THAT(after, IsSupersetOf({"send vendor 0x8", "log: Child process waiting for data"}));
}

TEST_F(StartUpNotices, NoticeThatCannotBeSentIsAWarningAndStartUpGoesOn) {
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

TEST_F(StartUpNotices, WholeStartUpIsLoggedLineByLine) {
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
    trace.clear();
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

TEST_F(StartUpNotices, NoticeThatIsSentGivesNoWarning) {
  put_kernel_panic();
  start("0");
  EXPECT_THAT(logs(), Not(Contains("[Warning] Failed notify the auto verify SIM PIN to BP")));
}

TEST_F(StartUpNotices, ReadyNoticeThatCannotBeSentIsIgnored) {
  fail_send(0x13, -2);
  start("0");
  EXPECT_EQ(trace.back(), "log: Buffer length is zero..Exiting QOREXT");
}

}  // namespace
