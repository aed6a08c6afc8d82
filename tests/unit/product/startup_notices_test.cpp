#include "capture_phone.h"
#include "host/bytes.h"
#include "host/parent.h"

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
