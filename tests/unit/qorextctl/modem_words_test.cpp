// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "modem/kpi/kpi_upload.h"
#include "modem/state/state_keys.h"
#include "tools/qorextctl/modem/modem_words.h"
#include "tools/qorextctl/session/session.h"
#include "tools/qorextctl/shell/history.h"

namespace qorextctl {
namespace {

using Texts = std::vector<std::string>;

std::string command(const std::string& line) {
  auto built = modem_command(*split_line(line));
  return built ? built->dump() : built.error().message;
}

TEST(ModemWords, CommandsWithoutArgumentsAreTheirName) {
  EXPECT_EQ(command("state"), R"({"command":"state"})");
  EXPECT_EQ(command("clear-faults"), R"({"command":"clear_faults"})");
  EXPECT_EQ(command("clear_requests"), R"({"command":"clear_requests"})");
  EXPECT_EQ(command("quit"), R"({"command":"quit"})");
}

TEST(ModemWords, NvReadsAndWrites) {
  EXPECT_EQ(command("nv 28"), R"({"command":"nv","rde_id":28})");
  EXPECT_EQ(command("nv 28 0a0b record=1"),
            R"({"command":"nv","rde_id":28,"data":"0a0b","record":1})");
  EXPECT_EQ(command("nv 28 record=1"), R"({"command":"nv","rde_id":28,"record":1})");
}

TEST(ModemWords, IndicationsHaveFieldsAndABurst) {
  EXPECT_EQ(command("indicate notify"),
            R"({"command":"indicate","indication":"notify","fields":{}})");
  EXPECT_EQ(command("indicate utils type=2 data=0102 --count 3 --interval-ms 10"),
            R"({"command":"indicate","indication":"utils","count":3,"interval_ms":10,)"
            R"("fields":{"type":2,"data":"0102"}})");
}

TEST(ModemWords, BytesThatLookLikeANumberStayAString) {
  EXPECT_EQ(command("indicate lte-error"),
            R"({"command":"indicate","indication":"lte_error","fields":{}})");
  EXPECT_EQ(command("indicate carrier value=1"),
            R"({"command":"indicate","indication":"carrier_event","fields":{"value":1}})");
  EXPECT_EQ(command("indicate utility type=7"),
            R"({"command":"indicate","indication":"utils","fields":{"type":7}})");
  EXPECT_EQ(command("indicate coverage report=1234"),
            R"({"command":"indicate","indication":"coverage","fields":{"report":"1234"}})");
  EXPECT_EQ(command("indicate utils data=[1,2]"),
            R"({"command":"indicate","indication":"utils","fields":{"data":[1,2]}})");
}

TEST(ModemWords, UploadsHaveALogAndOptions) {
  EXPECT_EQ(command("kpi --file /tmp/log --package 7 --packet-size 8 --lose 3 --reorder 4"),
            R"({"command":"kpi","file":"/tmp/log","package":7,"packet_size":8,"lose":3,)"
            R"("reorder":4})");
  EXPECT_EQ(command("kpi data=0102 --reorder --headerless --no-wait"),
            R"({"command":"kpi","reorder":2,"headerless":true,"wait":false,"data":"0102"})");
  EXPECT_EQ(command("kpi data=00 --header 0xFFFFFFFF"),
            R"({"command":"kpi","header":4294967295,"data":"00"})");
  EXPECT_EQ(command("kpi --file log").find(R"({"command":"kpi","file":"/)"), 0U);
  EXPECT_EQ(command("kpi --package 7"), "modem kpi: give --file LOG or data=HEX");
  EXPECT_EQ(command("kpi --file"), "modem: --file: expected a file");
  EXPECT_EQ(command("kpi data=00 --header 1"), "modem: --header: expected eight hex digits");
  EXPECT_EQ(command("kpi data=00 --lose x"), "modem: --lose: expected a number");
}

TEST(ModemWords, KpiRecordsAreOnePacketWithAHeaderWord) {
  EXPECT_EQ(command("kpi-record 02C0FFEE 0011 --package 5"),
            R"({"command":"kpi_packet","header":46202862,"data":"0011","package":5})");
  EXPECT_EQ(command("kpi-record 06C0FFEE"), R"({"command":"kpi_packet","header":113311726})");
  EXPECT_EQ(command("kpi-record 2"), "modem kpi-record: give a header word, such as 02C0FFEE");
  EXPECT_EQ(command("kpi-packet package=7 sequence=2 last=false data=00"),
            R"({"command":"kpi_packet","package":7,"sequence":2,"last":false,"data":"00"})");
}

TEST(ModemWords, SavesHaveACount) {
  EXPECT_EQ(command("hob-save"), R"({"command":"hob_save"})");
  EXPECT_EQ(command("hob-save --count 2 --no-wait"),
            R"({"command":"hob_save","count":2,"wait":false})");
  EXPECT_EQ(command("hob"), R"({"command":"hob"})");
}

TEST(ModemWords, FaultsHaveAKind) {
  EXPECT_EQ(command("fault error message=element_read error=0x30 times=1"),
            R"({"command":"fault","kind":"error","message":"element_read","error":48,"times":1})");
  EXPECT_EQ(command("fault kind=silent"), R"({"command":"fault","kind":"silent"})");
}

TEST(ModemWords, ServicesGoUpAndDown) {
  EXPECT_EQ(command("service nas down"), R"({"command":"service","name":"nas","up":false})");
  EXPECT_EQ(command("service qorext up"), R"({"command":"service","name":"qorext","up":true})");
}

TEST(ModemWords, InstancesAreSetOrPrinted) {
  EXPECT_EQ(command("instances 2"), R"({"command":"instances","count":2})");
  EXPECT_EQ(command("instances"), R"({"command":"instances"})");
  EXPECT_EQ(command("instances two"), "modem instances: expected a number, or nothing to print it");
  EXPECT_EQ(command("instances 2 3"), "modem instances: expected a number, or nothing to print it");
}

TEST(ModemWords, AKeyWithAValueHasNoMembers) {
  EXPECT_EQ(command("set lte=1 lte.mcc=2"),
            "modem: 'lte.mcc=2' names a member of a key that has a value");
  EXPECT_EQ(command("set lte.mcc=1 lte.mcc.x=2"),
            "modem: 'lte.mcc.x=2' names a member of a key that has a value");
  EXPECT_EQ(command("nv 28 rde_id.x=1"),
            "modem: 'rde_id.x=1' names a member of a key that has a value");
}

TEST(ModemWords, StateIsSetByPath) {
  EXPECT_EQ(command("set lte.mcc=310 lte.mnc=4 settings.spc=123456 flag=true"),
            R"({"command":"set","state":{"lte":{"mcc":310,"mnc":4},"settings":{"spc":"123456"},)"
            R"("flag":true}})");
}

// A value of the key's type, of a size that it accepts; a string consists of digits.
std::string sample_of(const modem::Key& key) {
  if (key.type != modem::Key::Type::string) return key.value;
  size_t size = Json::parse(key.value).get<std::string>().size();
  return std::string(size == 0 ? 2 : size, '1');
}

bool is_in_list(const modem::Key& key) { return key.path.find("[]") != std::string::npos; }

TEST(ModemWords, EveryKeyOfTheStateIsAcceptedWithAValueOfItsType) {
  for (const modem::Key& key : modem::state_keys()) {
    if (is_in_list(key)) continue;
    auto built = modem_command(Texts{"set", key.path + "=" + sample_of(key)});
    ASSERT_TRUE(built) << key.path;
    modem::State state = modem::factory_state();
    auto given = nlohmann::json::parse(built->at("state").dump());
    EXPECT_NO_THROW(modem::Archive::from_json(given, "", state)) << given;
  }
}

TEST(ModemWords, APersonalKeyOfTheStateStaysOutOfTheHistory) {
  for (const modem::Key& key : modem::state_keys()) {
    if (is_in_list(key)) continue;
    bool is_personal = key.privacy == modem::Privacy::personal;
    EXPECT_EQ(is_private_line("modem set " + key.path + "=" + sample_of(key)), is_personal)
        << key.path;
  }
  for (const char* pair :
       {"mdn=9135550199", "nam={\"mdn\":\"9135550199\"}", "settings={\"spc\":\"123456\"}",
        "nv=[{\"rde_id\":32,\"data\":\"313233\"}]", "security.akey=1", "nam.imsi-t=3"}) {
    EXPECT_TRUE(is_private_line(std::string("modem set '") + pair + "'")) << pair;
  }
}

template <typename Options>
void expect_strings_of(const std::string& command_line) {
  Options options;
  for (const modem::Key& key : modem::Archive::keys_of(options)) {
    if (key.type != modem::Key::Type::string) continue;
    EXPECT_NE(command(command_line + key.path + "=11").find("\"" + key.path + "\":\"11\""),
              std::string::npos)
        << key.path;
  }
}

TEST(ModemWords, StringsOfUploadsMayLookLikeNumbers) {
  expect_strings_of<modem::UploadOptions>("kpi data=00 ");
  expect_strings_of<modem::KpiPacketOptions>("kpi_packet ");
}

TEST(ModemWords, StringsOfFaultsMayLookLikeNumbers) {
  EXPECT_EQ(command("fault silent message=0x24 service=1 times=2"),
            R"({"command":"fault","kind":"silent","message":"0x24","service":"1","times":2})");
}

TEST(ModemWords, ExcessiveNestingIsRefused) {
  constexpr size_t kMany = 100'000;
  std::string deep = std::string(kMany, '[') + std::string(kMany, ']');
  EXPECT_EQ(command("set lte.mcc=" + deep),
            "modem: the value of 'mcc' is nested deeper than 64 levels");
  EXPECT_EQ(command("'{\"command\":" + deep + "}'"),
            "modem: the word in braces is nested deeper than 64 levels");
  std::string path;
  for (size_t i = 0; i < kMany; ++i) path += "a.";
  EXPECT_EQ(command("set " + path + "a=1"),
            "modem: '" + path.substr(0, 200) + "...' has more than 64 levels");
  EXPECT_EQ(command("set " + path.substr(0, 2 * 63) + "a=1").substr(0, 10), R"({"command")");
}

TEST(ModemWords, AWholeObjectIsNotChanged) {
  EXPECT_EQ(command(R"('{"command":"nv","rde_id":1}')"), R"({"command":"nv","rde_id":1})");
}

TEST(ModemWords, WrongWordsAreRefused) {
  EXPECT_EQ(command(""), "modem: no command given (see: qorextctl modem --help)");
  EXPECT_EQ(command("''"), "modem: unknown command '' (see: qorextctl modem --help)");
  EXPECT_EQ(command("frob"), "modem: unknown command 'frob' (see: qorextctl modem --help)");
  EXPECT_EQ(command("'{\"a\"'"), "modem: the word in braces is not one JSON object");
  EXPECT_EQ(command("nv"), "modem nv: give an element number, and hex bytes to write it");
  EXPECT_EQ(command("nv x"), "modem nv: give an element number, and hex bytes to write it");
  EXPECT_EQ(command("nv 1 0g"), "modem nv: '0g' is not hex (pairs of digits)");
  EXPECT_EQ(command("nv 1 0a more"), "modem: 'more' is not key=value");
  EXPECT_EQ(command("indicate"),
            "modem indicate: give an indication's name, such as notify or pfp");
  EXPECT_EQ(command("indicate a=1"),
            "modem indicate: give an indication's name, such as notify or pfp");
  EXPECT_EQ(command("indicate pfp --count"), "modem: --count: expected a number");
  EXPECT_EQ(command("indicate pfp --count x"), "modem: --count: expected a number");
  EXPECT_EQ(command("indicate pfp rat"), "modem: 'rat' is not key=value");
  EXPECT_EQ(command("fault times=1"), "modem fault: give a kind, such as silent, delay or error");
  EXPECT_EQ(command("service nas"),
            "modem service: give a service (qorext, nas, dms) and up or down");
  EXPECT_EQ(command("service nas sideways"),
            "modem service: give a service (qorext, nas, dms) and up or down");
  EXPECT_EQ(command("set"), "modem set: nothing to set, give key=value");
  EXPECT_EQ(command("set =1"), "modem: '=1' is not key=value");
}

TEST(ModemWords, TheHelpNamesEveryCommand) {
  for (const char* name :
       {"state", "set", "nv", "indicate", "fault", "faults", "clear_faults", "service", "instances",
        "requests", "clear_requests", "version", "quit"}) {
    EXPECT_NE(modem_command_help().find(std::string("  ") + name + " "), std::string::npos) << name;
  }
}

}  // namespace
}  // namespace qorextctl
