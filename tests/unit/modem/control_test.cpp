// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/modem/modem_test.h"

namespace {

using ::testing::HasSubstr;

class ControlLines : public ControlTest {};

TEST_F(ControlLines, VersionIsReported) {
  json answer = command("version");
  EXPECT_EQ(answer["ok"], true);
  EXPECT_EQ(answer["version"].get<std::string>().substr(0, 2), "0.");
}

TEST_F(ControlLines, AnswerIsOneLineOfAsciiOrUtf8) {
  std::string answer = control.answer(R"({"command":"state"})");
  EXPECT_EQ(answer.find('\n'), std::string::npos);
  EXPECT_THAT(answer, HasSubstr("Ærø Tel"));
}

TEST_F(ControlLines, StateThatIsSetAgainIsUnchanged) {
  json before = command("state")["state"];
  EXPECT_EQ(before["nam"]["mdn"], "9135550142");
  EXPECT_EQ(before["nam"]["imsi_t"], "310009135550142");
  EXPECT_EQ(before["settings"]["fsg_version"], "QOR-FSG-01.02.03");
  EXPECT_EQ(before["lte"]["channel_third_value"], 25);
  EXPECT_EQ(before["engineering"]["call_processing"]["channel"], 283);

  EXPECT_EQ(command("set", {{"state", before}})["ok"], true);
  EXPECT_EQ(command("state")["state"], before);
}

TEST_F(ControlLines, SetChangesWhatItNamesAndNothingElse) {
  json before = command("state")["state"];
  command("set", {{"state", {{"lte", {{"rsrp", -101}}}}}});
  json expected = before;
  expected["lte"]["rsrp"] = -101;
  EXPECT_EQ(command("state")["state"], expected);
}

TEST_F(ControlLines, SetOfTheNamWritesItsItems) {
  command("set",
          {{"state", {{"nam", {{"mdn", "5550100"}, {"min", "0000000000"}, {"home_sid", 258}}}}}});
  EXPECT_EQ(ask_qorext("element_read", {{"rde_id", 8}})["data"],
            "00070505050a010a0a0000000000000000");
  EXPECT_EQ(ask_qorext("element_read", {{"rde_id", 26}})["data"], "000000e703");  // 999
  EXPECT_EQ(ask_qorext("element_read", {{"rde_id", 25}})["data"], "0000000000e7ebf900");
  EXPECT_EQ(ask_qorext("element_read", {{"rde_id", 15}})["data"].get<std::string>().substr(0, 10),
            "0002010c00");
  EXPECT_EQ(command("state")["state"]["nam"]["min"], "0000000000");
}

TEST_F(ControlLines, SetOfAnItemWinsOverTheNam) {
  command("set", {{"state", {{"nam", {{"scm", 1}}}, {"nv", {{{"rde_id", 36}, {"data", "02"}}}}}}});
  EXPECT_EQ(command("state")["state"]["nam"]["scm"], 2);
}

TEST_F(ControlLines, SetCanRemoveAnItem) {
  command("set", {{"state", {{"nv", {{{"rde_id", 8029}, {"absent", true}}}}}}});
  EXPECT_EQ(ask_qorext("element_read", {{"rde_id", 8029}})["result"], result(1, 16));
}

TEST_F(ControlLines, SetWithAnErrorChangesNothing) {
  EXPECT_EQ(
      error_of("set", {{"state", {{"carrier", {{"bsr_timer", 1}}}, {"lte", {{"mcc", 1000}}}}}}),
      "lte.mcc: 1000 is out of range (0 to 999)");
  EXPECT_EQ(state().carrier.bsr_timer, 300U);
}

TEST_F(ControlLines, WrongValuesAreReportedByTheirPath) {
  const std::pair<json, const char*> kCases[] = {
      {{{"lte", 1}}, "lte: expected a table of keys and values"},
      {{{"lte", {{"rat", 1}}}}, "lte.rat: unknown key"},
      {{{"lte", {{"band", 25}}}}, "lte.band: unknown key"},
      {{{"lte", {{"mcc", "1"}}}}, "lte.mcc: expected a number (0 to 999)"},
      {{{"nam", {{"min", "123"}}}}, "nam.min: has 3 digits, expected 10"},
      {{{"nam", {{"mdn", "555-0142"}}}}, "nam.mdn: expected 0 to 15 digits"},
      {{{"operators", {{{"mcc", 1}, {"short_name", "北"}}}}},
       "operators[0].short_name: has a character that is not in the GSM alphabet"},
      {{{"operators", {{{"long_name", std::string(65, 'a')}}}}},
       "operators[0].long_name: has more than 64 characters"},
      {{{"ehrpd_apns", {{{"second_value", "1.2.3"}}}}},
       "ehrpd_apns[0].second_value: expected a number (0 to 4294967295)"},
      {{{"ehrpd_apns", {{{"remaining_bytes", "0g"}}}}},
       "ehrpd_apns[0].remaining_bytes: expected hexadecimal digits, two per byte"},
      {{{"ehrpd_apns", json::array({1, 2, 3, 4, 5, 6, 7, 8, 9})}},
       "ehrpd_apns: has 9 entries, expected 0 to 8"},
      {{{"nv", {{{"rde_id", 1}, {"data", std::string(1026, '0')}}}}},
       "nv[0].data: has 513 bytes, expected 0 to 512"},
      {{{"nv", {{{"rde_id", 1}, {"data", "0"}}}}},
       "nv[0].data: expected hexadecimal digits, two per byte"},
      {{{"carrier", {{"tot_order", 1}}}}, "carrier.tot_order: expected a list"},
      {{{"carrier", {{"tot_order", {1, -1}}}}},
       "carrier.tot_order[1]: -1 is out of range (0 to 4294967295)"},
      {{{"security", {{"subsidy_lock_code", "12345"}}}},
       "security.subsidy_lock_code: has 5 bytes, expected 6"},
  };
  for (const auto& [given, error] : kCases) {
    EXPECT_EQ(error_of("set", {{"state", given}}), error);
  }
}

TEST_F(ControlLines, ItemsAreReadAndWritten) {
  EXPECT_EQ(command("nv", {{"rde_id", 6000}, {"record", 2}, {"data", "01 02"}}),
            (json{{"ok", true}, {"rde_id", 6000}, {"record", 2}, {"data", "0102"}}));
  EXPECT_EQ(command("nv", {{"rde_id", 6000}, {"record", 2}})["data"], "0102");
  EXPECT_EQ(error_of("nv", {{"rde_id", 6000}}), "no NV item 6000, record 0");
}

TEST_F(ControlLines, IndicationsGoToAllClientsInABurst) {
  EXPECT_EQ(
      command("indicate",
              {{"indication", "carrier_event"}, {"fields", {{"value", 258}}}, {"count", 3}})["ok"],
      true);
  auto due = actions();
  ASSERT_EQ(due.size(), 3U);
  for (const Action& action : due) {
    EXPECT_EQ(action.kind, Action::Kind::broadcast);
    EXPECT_EQ(action.packet, (Bytes{4, 0, 0, 0x12, 0, 5, 0, 1, 2, 0, 2, 1}));
  }
}

TEST_F(ControlLines, IndicationsAreSentAtIntervals) {
  command("indicate", {{"indication", "notify"}, {"count", 3}, {"interval_ms", 60000}});
  EXPECT_EQ(actions().size(), 1U);
  EXPECT_EQ(actions(std::chrono::seconds(61)).size(), 1U);
  EXPECT_EQ(actions(std::chrono::seconds(121)).size(), 1U);
}

TEST_F(ControlLines, TheTimeOfTheLongestBurstDoesNotOverflow) {
  command("indicate", {{"indication", "notify"}, {"count", 100000}, {"interval_ms", 3600000}});
  EXPECT_EQ(actions().size(), 1U);
  EXPECT_EQ(actions(std::chrono::hours(100000)).size(), 99999U);
}

TEST_F(ControlLines, EveryIndicationCanBeSentWithoutFields) {
  for (const auto& message : modem::qorext_service().messages) {
    if (message.direction != qmi_idl::Direction::indication) continue;
    EXPECT_EQ(command("indicate", {{"indication", message.name}})["ok"], true);
    EXPECT_EQ(actions().size(), 1U) << message.name;
  }
}

TEST_F(ControlLines, WrongIndicationsAreRefused) {
  EXPECT_EQ(error_of("indicate", {{"indication", "nothing"}}), "unknown indication \"nothing\"");
  EXPECT_EQ(error_of("indicate", {{"indication", "notify"}, {"count", 100001}}),
            "count: 100001 is out of range (0 to 100000)");
  // With longer intervals the time of a burst's last indication would overflow.
  EXPECT_EQ(error_of("indicate", {{"indication", "notify"}, {"interval_ms", 3600001}}),
            "interval_ms: 3600001 is out of range (0 to 3600000)");
  EXPECT_EQ(error_of("indicate", {{"indication", "utils"}, {"fields", {{"x", 1}}}}),
            "utils: unknown field \"x\"");
  EXPECT_TRUE(actions().empty());
}

TEST_F(ControlLines, FaultsAreAddedListedAndCleared) {
  command("fault", {{"service", "nas"}, {"kind", "silent"}, {"times", 2}});
  EXPECT_EQ(faults()[0]["times"], 2);
  EXPECT_EQ(command("clear_faults")["ok"], true);
  EXPECT_EQ(faults(), json::array());
}

TEST_F(ControlLines, EveryKindOfFaultIsAccepted) {
  for (const char* kind : modem::kFaultKinds) {
    EXPECT_EQ(command("fault", {{"kind", kind}})["ok"], true) << kind;
  }
  EXPECT_EQ(simulator.faults.all().size(), std::size(modem::kFaultKinds));
}

TEST_F(ControlLines, WrongFaultsAreRefused) {
  EXPECT_EQ(error_of("fault"), "kind: is missing");
  EXPECT_EQ(error_of("fault", {{"kind", "silent"}, {"service", "x"}}),
            "service: unknown service \"x\"");
  EXPECT_EQ(error_of("fault", {{"kind", "silent"}, {"message", "utilz"}}),
            "message: unknown request \"utilz\"");
  EXPECT_EQ(error_of("fault", {{"kind", "silent"}, {"service", "nas"}, {"message", "utils"}}),
            "message: unknown request \"utils\"");
  EXPECT_TRUE(simulator.faults.all().empty());
}

TEST_F(ControlLines, ServicesAreWithdrawnAndPublished) {
  command("service", {{"name", "nas"}, {"up", false}});
  command("service", {{"name", "nas"}, {"up", true}});
  auto due = actions();
  ASSERT_EQ(due.size(), 2U);
  EXPECT_EQ(due[0].kind, Action::Kind::withdraw);
  EXPECT_EQ(due[1].kind, Action::Kind::publish);
  EXPECT_EQ(due[1].service, 3U);
  EXPECT_EQ(error_of("service", {{"name", "wds"}, {"up", true}}), "unknown service \"wds\"");
  EXPECT_EQ(error_of("service", {{"name", "nas"}, {"up", 1}}), "up: expected true or false");
}

TEST_F(ControlLines, InstancesAreSetAndReported) {
  EXPECT_EQ(command("instances")["count"], 1);
  EXPECT_TRUE(actions().empty());
  EXPECT_EQ(command("instances", {{"count", 2}})["count"], 2);
  EXPECT_EQ(simulator.instances, 2U);
  auto due = actions();
  ASSERT_EQ(due.size(), 1U);
  EXPECT_EQ(due[0].kind, Action::Kind::resize);
  EXPECT_EQ(error_of("instances", {{"count", 0}}), "count: 0 is out of range (1 to 16)");
  EXPECT_EQ(error_of("instances", {{"count", 17}}), "count: 17 is out of range (1 to 16)");
  EXPECT_EQ(simulator.instances, 2U);
}

TEST_F(ControlLines, RequestsAreListedUntilCleared) {
  ask_qorext("set_bsr_timer", {{"timer", 5}});
  ask(modem::nas_service(), "get_sig_info");
  json requests = command("requests")["requests"];
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_EQ(requests[0]["service"], "qorext");
  EXPECT_EQ(requests[0]["message"], "set_bsr_timer");
  EXPECT_EQ(requests[0]["fields"], (json{{"timer", 5}}));
  EXPECT_THAT(requests[1]["time"].get<std::string>(),
              ::testing::MatchesRegex("[0-9-]+T[0-9:]+\\.[0-9]+Z"));

  command("clear_requests");
  EXPECT_EQ(command("requests")["requests"], json::array());
}

TEST_F(ControlLines, WrongLinesAreAnsweredWithAnError) {
  EXPECT_EQ(line("{")["error"], "the line is not JSON");
  EXPECT_EQ(line("")["error"], "the line is not JSON");
  EXPECT_EQ(line("[]")["error"], "expected an object with a \"command\"");
  EXPECT_EQ(line("{}")["error"], "expected an object with a \"command\"");
  EXPECT_EQ(error_of("fly"), "unknown command \"fly\"");
  EXPECT_EQ(error_of("version", {{"x", 1}}), "x: unknown key");
  EXPECT_FALSE(control.quit_wanted());
}

std::string nested(size_t levels, const std::string& open, const std::string& close) {
  std::string text;
  for (size_t i = 0; i < levels; ++i) text += open;
  text += "1";
  for (size_t i = 0; i < levels; ++i) text += close;
  return text;
}

TEST_F(ControlLines, ExcessiveNestingIsRefused) {
  constexpr size_t kMany = 74'300;
  const std::string kTooDeep = "the line is nested deeper than 64 levels";
  EXPECT_EQ(line(R"({"command":"set","state":)" + nested(kMany, "[", "]") + "}")["error"],
            kTooDeep);
  EXPECT_EQ(line(nested(kMany, R"({"a":)", "}"))["error"], kTooDeep);
  EXPECT_EQ(line(std::string(kMany, '['))["error"], kTooDeep);
  EXPECT_EQ(line(R"({"\"":)" + nested(kMany, "[", "]") + "}")["error"], kTooDeep);
  EXPECT_EQ(command("version")["ok"], true);
}

TEST_F(ControlLines, SixtyFourLevelsAreAccepted) {
  std::string start = R"({"command":"set","state":)";
  EXPECT_EQ(line(start + nested(63, "[", "]") + "}")["error"],
            "expected a table of keys and values");
  EXPECT_EQ(line(start + nested(64, "[", "]") + "}")["error"],
            "the line is nested deeper than 64 levels");
}

TEST_F(ControlLines, BracketsAndColonsInAStringDoNotCountAsLevels) {
  std::string text = std::string(100'000, '[') + R"(\\\")" + std::string(100'000, ':');
  json answer = line(R"({"command":"service","up":true,"name":")" + text + "\"}");
  EXPECT_EQ(answer["error"], "name: has 200002 bytes, expected 0 to 64");
}

TEST_F(ControlLines, AnObjectHasAtMost4096Members) {
  std::string members;
  for (int i = 0; i < 4096; ++i) members += ",\"" + std::to_string(i) + "\":1";
  EXPECT_EQ(line("{" + members.substr(1) + "}")["error"], "expected an object with a \"command\"");
  EXPECT_EQ(line("{\"a\":1" + members + "}")["error"],
            "the line has an object of more than 4096 members");
}

TEST_F(ControlLines, MissingArgumentsAreReportedByName) {
  EXPECT_EQ(error_of("set"), "state: is missing");
  EXPECT_EQ(error_of("nv"), "rde_id: is missing");
  EXPECT_EQ(error_of("indicate"), "indication: is missing");
  EXPECT_EQ(error_of("service", {{"up", true}}), "name: is missing");
  EXPECT_EQ(error_of("service", {{"name", "nas"}}), "up: is missing");
}

TEST_F(ControlLines, LineThatIsNotUtf8IsAnswered) {
  EXPECT_EQ(json::parse(control.answer("{\"command\":\"\xFF\"}"))["ok"], false);
}

TEST_F(ControlLines, StateWithInvalidUtf8IsReported) {
  state().nv.put({32}, {0xFF, 0xFE, 1, 2, 3, 4});
  EXPECT_EQ(command("state")["ok"], true);
}

TEST_F(ControlLines, QuitIsReportedToTheLoop) {
  EXPECT_EQ(command("quit")["ok"], true);
  EXPECT_TRUE(control.quit_wanted());
}

}  // namespace
