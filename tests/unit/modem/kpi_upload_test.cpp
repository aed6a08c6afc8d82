// SPDX-License-Identifier: Apache-2.0
#include "modem/kpi/kpi_upload.h"

#include "tests/unit/modem/modem_test.h"

namespace {

using modem::KpiUpload;
using modem::UploadOptions;
using modem::UploadPlan;
using ::testing::HasSubstr;

// The packets of an upload as hex, without their sizes: "PPSSLL:PAYLOAD ...".
std::string packets_of(const UploadOptions& options) {
  KpiUpload upload(options);
  std::string texts;
  while (auto packet = upload.next()) {
    json fields = fields_of(modem::qorext_service(), *packet);
    EXPECT_EQ(fields["type"], 1);
    std::string data = fields["data"];
    texts += data.substr(0, 6) + ":" + data.substr(12) + " ";
  }
  EXPECT_EQ(upload.progress()["state"], "done");
  return texts;
}

TEST(KpiUploadPackets, BeginWithTheHeaderWordAndEndWithTheLastFlag) {
  EXPECT_EQ(packets_of({.data = {1, 2, 3, 4, 5}, .package = 7, .packet_size = 2}),
            "070100:eeffc0010102 070200:0304 070301:05 ");
}

TEST(KpiUploadPackets, StateTheirSizeWithTheHeaderWord) {
  Bytes packet =
      modem::kpi_indication(modem::KpiPacket{7, 1, true, modem::with_header(0x01C0FFEE, Bytes{9})});
  Bytes wanted = {7, 1, 1, 0, 5, 0, 0xEE, 0xFF, 0xC0, 0x01, 9};
  EXPECT_TRUE(std::equal(wanted.rbegin(), wanted.rend(), packet.rbegin()));
}

TEST(KpiUploadPackets, AreLostAndReorderedOnRequest) {
  Bytes log = {0, 1, 2, 3, 4};
  auto options = [&log](uint32_t lose, uint32_t reorder) {
    return UploadOptions{.data = log, .packet_size = 1, .lose = lose, .reorder = reorder};
  };
  EXPECT_EQ(packets_of(options(3, 0)), "000100:eeffc00100 000200:01 000400:03 000501:04 ");
  EXPECT_EQ(packets_of(options(0, 4)),
            "000100:eeffc00100 000200:01 000300:02 000501:04 000400:03 ");
}

TEST(KpiUploadPackets, OfAHeaderlessLogHoldOnlyTheLog) {
  EXPECT_EQ(packets_of({.data = {1, 2, 3, 4, 5, 6}, .is_headerless = true}),
            "000101:010203040506 ");
}

// "PACKAGE.SEQUENCE", an asterisk for the last packet of the package, "OFFSET+SIZE".
std::string place_in(const UploadPlan& plan, uint64_t index) {
  auto place = plan.place(index);
  return std::to_string(place.package) + "." + std::to_string(place.sequence) +
         (place.is_last ? "* " : " ") + std::to_string(place.offset) + "+" +
         std::to_string(place.size);
}

TEST(KpiUploadPlan, EndsAPackageAfter255Packets) {
  UploadPlan plan({}, uint64_t{255} * 502 + 1);
  EXPECT_EQ(plan.packets(), 256U);
  EXPECT_EQ(plan.packages(), 2U);
  EXPECT_EQ(place_in(plan, 254), "0.255* 127508+502");
  EXPECT_EQ(place_in(plan, 255), "1.1* 128010+1");
}

TEST(KpiUploadPlan, LengthensAShortHeaderlessPackageByOnePacket) {
  UploadPlan plan({.packet_size = 8, .is_headerless = true}, uint64_t{255} * 8 + 4);
  EXPECT_EQ(place_in(plan, 253), "0.254* 2024+8");
  EXPECT_EQ(place_in(plan, 254), "1.1 2032+8");
  EXPECT_EQ(place_in(plan, 255), "1.2* 2040+4");
}

TEST(KpiUploadPlan, RefusesPacketsThatTheReceiverDoesNotAccept) {
  EXPECT_THROW(UploadPlan({.packet_size = 503}, 9), std::invalid_argument);
  EXPECT_NO_THROW(UploadPlan({.packet_size = 506, .is_headerless = true}, 9));
  EXPECT_THROW(UploadPlan({.packet_size = 4, .is_headerless = true}, 9), std::invalid_argument);
  EXPECT_THROW(UploadPlan({.is_headerless = true}, 4), std::invalid_argument);
  EXPECT_THROW(UploadPlan({.packet_size = 3, .lose = 4}, 9), std::invalid_argument);
  EXPECT_THROW(UploadPlan({.packet_size = 3, .reorder = 3}, 9), std::invalid_argument);
}

class UploadCommands : public ControlTest {};

TEST_F(UploadCommands, RunOneAtATime) {
  EXPECT_EQ(command("kpi", {{"data", "0102"}})["upload"], 1);
  EXPECT_EQ(command("kpi", {{"data", "03"}})["upload"], 2);
  while (auto* upload = simulator.uploads.current()) upload->next();
  json list = command("uploads")["uploads"];
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0]["bytes"], 2);
  EXPECT_EQ(list[1]["state"], "done");
}

TEST_F(UploadCommands, RequireALog) {
  EXPECT_EQ(command("kpi")["ok"], false);
  EXPECT_THAT(command("kpi", {{"file", "/no/such"}})["error"], HasSubstr("/no/such"));
  EXPECT_THAT(command("kpi", {{"file", "/tmp"}})["error"], HasSubstr("not a file"));
  EXPECT_EQ(simulator.uploads.current(), nullptr);
}

TEST_F(UploadCommands, ReportAFailureAndContinueWithTheNext) {
  command("kpi", {{"data", "0102"}});
  command("kpi", {{"data", "03"}});
  simulator.uploads.current()->fail("the client has gone");
  json list = command("uploads")["uploads"];
  EXPECT_EQ(list[0]["state"], "failed");
  EXPECT_EQ(list[0]["error"], "the client has gone");
  EXPECT_NE(simulator.uploads.current(), nullptr);
}

TEST_F(UploadCommands, ASinglePacketHasTheGivenFields) {
  command("kpi_packet", {{"package", 9}, {"sequence", 4}, {"last", false}, {"data", "aa"}});
  command("kpi_packet", {{"header", 46202862}, {"data", "bb"}});
  auto due = actions();
  ASSERT_EQ(due.size(), 2U);
  EXPECT_EQ(due[0].kind, Action::Kind::broadcast);
  EXPECT_EQ(fields_of(modem::qorext_service(), due[0].packet)["data"], "090400000100aa");
  EXPECT_EQ(fields_of(modem::qorext_service(), due[1].packet)["data"], "000101000500eeffc002bb");
}

TEST_F(UploadCommands, SavesReportTheNumberOfEarlierAnswers) {
  ask_qorext("hob", {{"state", 0xFF}});
  ask_qorext("hob", {{"state", 1}});
  EXPECT_EQ(command("hob_save", {{"count", 2}})["answers"], 1);
  EXPECT_EQ(actions().size(), 2U);
  ask_qorext("hob", {{"state", 0}});
  json hob = command("hob");
  EXPECT_EQ(hob["states"], (json{"ready", "saved", "failed"}));
  EXPECT_EQ(hob["answers"], 2);
}

}  // namespace
