// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "modem/messages/services.h"
#include "tests/unit/modem/modem_process.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST_F(ModemProcess, ServesAllThreeServices) {
  ServiceClient qorext = start_with_client();
  ServiceClient nas(endpoint, modem::nas_service());
  ServiceClient dms(endpoint, modem::dms_service());
  ASSERT_TRUE(qorext.is_open() && nas.is_open() && dms.is_open());

  EXPECT_EQ(qorext.ask("element_read", {{"rde_id", 32}})["data"], "303030303030");
  EXPECT_EQ(nas.ask("get_sig_info")["lte_rssi"], -67);
  EXPECT_EQ(dms.ask("verify_subsidy_lock", {{"code", "323436383130"}})["result"]["result"], 0);
}

TEST_F(ModemProcess, AValueWrittenByOneClientIsReadByAnother) {
  ServiceClient first = start_with_client();
  ServiceClient second(endpoint);
  first.ask("element_write", {{"rde_id", 6000}, {"length", 2}, {"data", "beef"}});
  EXPECT_EQ(second.ask("element_read", {{"rde_id", 6000}})["data"], "beef");
  EXPECT_EQ(command("nv", {{"rde_id", 6000}})["data"], "beef");
}

TEST_F(ModemProcess, IndicationsReachEveryClientOfTheService) {
  ServiceClient first = start_with_client();
  ServiceClient second(endpoint);
  // After an answer the modem knows the client.
  first.ask("get_bsr_timer");
  second.ask("get_bsr_timer");
  command("indicate", {{"indication", "carrier_event"}, {"fields", {{"value", 7}}}, {"count", 2}});
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(first.next_fields(), (json{{"value", 7}}));
    EXPECT_EQ(second.next_fields(), (json{{"value", 7}}));
  }
}

TEST_F(ModemProcess, PfpRequestIsFollowedByItsIndication) {
  ServiceClient client = start_with_client();
  EXPECT_EQ(client.ask("pfp")["result"]["result"], 0);
  EXPECT_EQ(client.next_fields()["rat"], 8);
}

TEST_F(ModemProcess, DelayedAnswerIsSentAfterItsDelay) {
  ServiceClient client = start_with_client();
  command("fault", {{"kind", "delay"}, {"delay_ms", 200}});
  auto asked = Clock::now();
  EXPECT_EQ(client.ask("get_bsr_timer")["timer"], 300);
  EXPECT_GE(Clock::now() - asked, std::chrono::milliseconds(200));
}

TEST_F(ModemProcess, ServiceGoesAwayAndComesBack) {
  ServiceClient client = start_with_client();
  client.ask("get_bsr_timer");
  command("service", {{"name", "qorext"}, {"up", false}});
  EXPECT_TRUE(client.sees_the_service_go());
  EXPECT_TRUE(client.next(qmi_transport::Announcement::Kind::gone).has_value());

  command("service", {{"name", "qorext"}, {"up", true}});
  EXPECT_TRUE(client.next(qmi_transport::Announcement::Kind::appeared).has_value());
  ServiceClient next(endpoint);
  EXPECT_EQ(next.ask("get_bsr_timer")["timer"], 300);
}

// The instances of the vendor's service that the name service lists.
std::vector<uint32_t> instances_at(const qmi_transport::Endpoint& endpoint) {
  const auto& service = modem::qorext_service();
  auto watch = qmi_transport::watch_service(endpoint, service.id, service.version);
  qmi_transport::Announcement announcement{};
  std::vector<uint32_t> instances;
  while (watch && wait_readable(watch->fd())) {
    if (watch->next(announcement) != qmi_transport::Status::ok) break;
    if (announcement.kind == qmi_transport::Announcement::Kind::end_of_list) break;
    instances.push_back(announcement.server.instance >> 8);
  }
  return instances;
}

TEST_F(ModemProcess, InstancesComeAndGo) {
  start();
  EXPECT_THAT(instances_at(endpoint), ElementsAre(1));
  ServiceClient first(endpoint);
  EXPECT_EQ(command("instances", {{"count", 3}})["count"], 3);
  EXPECT_THAT(instances_at(endpoint), ElementsAre(1, 2, 3));
  EXPECT_EQ(first.ask("get_bsr_timer")["timer"], 300);
  command("instances", {{"count", 2}});
  EXPECT_THAT(instances_at(endpoint), ElementsAre(1, 2));
  EXPECT_EQ(first.ask("get_bsr_timer")["timer"], 300);

  command("service", {{"name", "qorext"}, {"up", false}});
  EXPECT_THAT(instances_at(endpoint), IsEmpty());
  command("instances", {{"count", 4}});
  EXPECT_THAT(instances_at(endpoint), IsEmpty());
  command("service", {{"name", "qorext"}, {"up", true}});
  EXPECT_THAT(instances_at(endpoint), ElementsAre(1, 2, 3, 4));
}

TEST_F(ModemProcess, ClientsOfAWithdrawnInstanceAreClosed) {
  ServiceClient first = start_with_client({"--instances", "2"});
  auto watch = qmi_transport::watch_service(endpoint, modem::qorext_service().id,
                                            modem::qorext_service().version);
  qmi_transport::Announcement second{};
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(wait_readable(watch->fd()));
    ASSERT_EQ(watch->next(second), qmi_transport::Status::ok);
  }
  auto channel = qmi_transport::open_channel(endpoint, second.server);
  ASSERT_NE(channel, nullptr);
  command("instances", {{"count", 1}});
  Bytes buffer(qmi_transport::kMaxPacketSize);
  ASSERT_TRUE(wait_readable(channel->fd()));
  EXPECT_EQ(channel->receive(buffer).status, qmi_transport::Status::gone);
  EXPECT_EQ(first.ask("get_bsr_timer")["timer"], 300);
}

TEST_F(ModemProcess, TheOptionForInstancesWinsOverTheScenario) {
  std::ofstream(file("scenario.toml")) << "instances = 2\n";
  start({"--scenario", file("scenario.toml")});
  EXPECT_THAT(instances_at(endpoint), ElementsAre(1, 2));
  kill(pid_, SIGTERM);
  EXPECT_EQ(wait_for_end(), 0);
  start({"--scenario", file("scenario.toml"), "--instances", "3"});
  EXPECT_THAT(instances_at(endpoint), ElementsAre(1, 2, 3));
  kill(pid_, SIGTERM);
  EXPECT_EQ(wait_for_end(), 0);
  launch({"--instances", "17"});
  EXPECT_EQ(wait_for_end(), 2);
}

TEST_F(ModemProcess, CloseFaultDropsTheClients) {
  ServiceClient client = start_with_client();
  command("fault", {{"kind", "close"}, {"times", 1}});
  EXPECT_EQ(client.ask("get_bsr_timer"), "nothing");
  ServiceClient next(endpoint);
  EXPECT_EQ(next.ask("get_bsr_timer")["timer"], 300);
}

TEST_F(ModemProcess, MalformedPacketsDoNotEndTheProcess) {
  ServiceClient good = start_with_client();
  {
    ServiceClient bad(endpoint);
    bad.send({0xFF});
    bad.send({0, 1, 0, 0x08, 0, 9, 0, 1});
    bad.send(modem::result_packet(1, 8, 0, 0));
    bad.send(modem::make_packet(qmi_idl::WireType::request, 1, 8, Bytes{1, 0xFF, 0xFF}));
    EXPECT_EQ(bad.next_fields()["result"]["error"], 1);
    bad.send(modem::make_packet(qmi_idl::WireType::request, 2, 8, Bytes(65535)));
  }
  EXPECT_EQ(good.ask("get_bsr_timer")["timer"], 300);
}

TEST_F(ModemProcess, WatchersGetAReportOfEveryMessageInOrder) {
  start();
  ControlClient watcher(control_path);
  EXPECT_EQ(watcher.command("watch"), (json{{"ok", true}}));
  ServiceClient client(endpoint);
  client.ask("get_bsr_timer");
  ControlClient other(control_path);
  other.command("indicate", {{"indication", "notify"}});
  other.command("service", {{"name", "nas"}, {"up", false}});

  json request = watcher.read_json()["message"];
  json response = watcher.read_json()["message"];
  json indication = watcher.read_json()["message"];
  json service = watcher.read_json()["service"];
  EXPECT_EQ(request["service"], "qorext");
  EXPECT_EQ(request["packet"].get<std::string>().substr(0, 2), "00");
  EXPECT_EQ(response["packet"].get<std::string>().substr(0, 2), "02");
  EXPECT_EQ(indication["packet"], "04000001000000");
  EXPECT_EQ(request["client"], response["client"]);
  EXPECT_EQ(request["client"], indication["client"]);
  EXPECT_LT(request["time"], response["time"]);
  EXPECT_LT(response["time"], indication["time"]);
  EXPECT_LT(indication["time"], service["time"]);
  EXPECT_EQ(service["name"], "nas");
  EXPECT_EQ(service["up"], false);
  // A connection that does not watch gets no reports.
  EXPECT_EQ(other.command("version")["ok"], true);
}

TEST_F(ModemProcess, AWatcherGetsAnswersAfterEarlierReports) {
  start();
  ControlClient watcher(control_path);
  watcher.command("watch");
  ServiceClient client(endpoint);
  client.ask("get_bsr_timer");
  watcher.send_text("{\"command\":\"version\"}\n");
  EXPECT_TRUE(watcher.read_json().contains("message"));
  EXPECT_TRUE(watcher.read_json().contains("message"));
  EXPECT_EQ(watcher.read_json()["ok"], true);
}

TEST_F(ModemProcess, AWatcherThatDoesNotReadDoesNotDelayOthers) {
  start();
  ControlClient stuck(control_path);
  stuck.command("watch");
  ServiceClient client(endpoint);
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(client.ask("get_bsr_timer")["timer"], 300);
}

TEST_F(ModemProcess, ControlAnswersSeveralConnectionsLineByLine) {
  start();
  ControlClient first(control_path);
  ControlClient second(control_path);
  first.send_text("{\"command\":\"ver");
  EXPECT_EQ(second.command("version")["ok"], true);
  first.send_text("sion\"}\nnonsense\n{\"command\":\"faults\"}\n");
  EXPECT_EQ(first.read_json()["ok"], true);
  EXPECT_EQ(first.read_json()["error"], "the line is not JSON");
  EXPECT_EQ(first.read_json()["faults"], json::array());
}

TEST_F(ModemProcess, DeepControlLineLeavesItsConnectionOpen) {
  start();
  constexpr size_t kMany = 74'300;
  ControlClient control(control_path);
  control.send_text(R"({"command":"set","state":)" + std::string(kMany, '[') +
                    std::string(kMany, ']') + "}\n");
  EXPECT_EQ(control.read_json()["error"], "the line is nested deeper than 64 levels");
  EXPECT_EQ(command("version")["ok"], true);
}

TEST_F(ModemProcess, UnterminatedControlLineClosesOnlyItsConnection) {
  start();
  ControlClient flood(control_path);
  std::string chunk(1 << 16, 'x');
  while (send(flood.fd(), chunk.data(), chunk.size(), MSG_NOSIGNAL) > 0) {
  }
  ControlClient other(control_path);
  EXPECT_EQ(other.command("version")["ok"], true);
}

TEST_F(ModemProcess, ClientThatReadsNoAnswersDoesNotDelayOthers) {
  start();
  ControlClient stuck(control_path);
  std::string lines;
  for (int i = 0; i < 200; ++i) lines += "{\"command\":\"state\"}\n";
  stuck.send_text(lines);
  ControlClient other(control_path);
  EXPECT_EQ(other.command("version")["ok"], true);
  for (int i = 0; i < 200; ++i) EXPECT_EQ(stuck.read_json()["ok"], true);
}

TEST_F(ModemProcess, SignalsRemoveTheSocketsAndEndWithStatus0) {
  for (int number : {SIGTERM, SIGINT}) {
    start();
    kill(pid_, number);
    EXPECT_EQ(wait_for_end(), 0);
    EXPECT_FALSE(exists(endpoint.path));
    EXPECT_FALSE(exists(control_path));
  }
}

TEST_F(ModemProcess, QuitIsAnsweredBeforeTheProcessEnds) {
  start();
  EXPECT_EQ(command("quit")["ok"], true);
  EXPECT_EQ(wait_for_end(), 0);
  EXPECT_FALSE(exists(control_path));
}

TEST_F(ModemProcess, SocketOfAKilledModemIsReplaced) {
  start();
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
  EXPECT_TRUE(exists(control_path));
  start();
  EXPECT_TRUE(ControlClient(control_path).is_connected());
}

TEST_F(ModemProcess, ControlSocketInUseIsNotReplaced) {
  start();
  pid_t first = pid_;
  launch({"--listen", "unix:" + endpoint.path + "2", "--control", control_path});
  EXPECT_EQ(wait_for_end(), 1);
  EXPECT_THAT(text_of("errors"), HasSubstr("control: Address already in use"));
  pid_ = first;
  EXPECT_EQ(ControlClient(control_path).command("version")["ok"], true);
}

TEST_F(ModemProcess, VerbosePrintsMessagesByName) {
  ServiceClient client = start_with_client({"--verbose"});
  client.ask("set_bsr_timer", {{"timer", 9}});
  EXPECT_EQ(text_of("errors"),
            "qorext set_bsr_timer request {\"timer\":9}\n"
            "qorext set_bsr_timer response {\"error\":0,\"outcome\":1}\n");
}

TEST_F(ModemProcess, ScenarioIsTheStartState) {
  std::ofstream(file("scenario.toml")) << "[carrier]\nbsr_timer = 17\n"
                                          "[[faults]]\nmessage = \"read_band\"\nkind = \"error\"\n";
  ServiceClient client = start_with_client({"--scenario", file("scenario.toml")});
  EXPECT_EQ(client.ask("get_bsr_timer")["timer"], 17);
  EXPECT_EQ(client.ask("read_band")["status"], 1);
  client.ask("set_bsr_timer", {{"timer", 9}});
  client.ask("factory_reset");
  EXPECT_EQ(client.ask("get_bsr_timer")["timer"], 17);
}

TEST_F(ModemProcess, WrongScenarioIsReportedInOneLineWithStatus2) {
  std::ofstream(file("scenario.toml")) << "[carrier]\nbsr_timer = -1\n";
  launch({"--listen", "unix:" + endpoint.path, "--scenario", file("scenario.toml")});
  EXPECT_EQ(wait_for_end(), 2);
  EXPECT_EQ(text_of("errors"), file("scenario.toml") +
                                   ":2: carrier.bsr_timer: -1 is out of range (0 to 4294967295)\n");
}

TEST_F(ModemProcess, DeepScenarioIsReportedInOneLineWithStatus2) {
  std::ofstream deep(file("scenario.toml"));
  for (int i = 0; i < 200'000; ++i) deep << "a.";
  deep << "a = 1\n" << std::flush;
  launch({"--listen", "unix:" + endpoint.path, "--scenario", file("scenario.toml")});
  EXPECT_EQ(wait_for_end(), 2);
  EXPECT_EQ(text_of("errors"), file("scenario.toml") + ":1: is nested deeper than 64 levels\n");
}

TEST_F(ModemProcess, WrongOptionsAreRefusedWithStatus2) {
  for (const char* option : {"--listen=tcp:1", "--ready-fd=-1", "--what"}) {
    launch({option});
    EXPECT_EQ(wait_for_end(), 2) << option;
  }
}

TEST_F(ModemProcess, HelpAndVersionArePrinted) {
  launch({"--help"});
  EXPECT_EQ(wait_for_end(), 0);
  EXPECT_THAT(text_of("errors"), HasSubstr("--scenario"));
  launch({"--version"});
  EXPECT_EQ(wait_for_end(), 0);
  EXPECT_THAT(text_of("errors"), ::testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

}  // namespace
