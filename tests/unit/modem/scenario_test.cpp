// SPDX-License-Identifier: Apache-2.0
#include "modem/scenario.h"

#include "modem/state/nam.h"
#include "tests/unit/modem/modem_test.h"

namespace {

modem::Scenario load(const std::string& text) {
  return modem::read_scenario(text, "scenario.toml");
}

std::string error_of(const std::string& text) {
  try {
    load(text);
  } catch (const modem::ScenarioError& error) {
    return error.what();
  }
  return "";
}

TEST(ScenarioFile, EmptyFileIsTheFactoryState) {
  EXPECT_EQ(load("").state.carrier.bsr_timer, 300U);
  EXPECT_TRUE(load("").faults.empty());
}

TEST(ScenarioFile, GivenValuesReplaceThoseOfTheFactory) {
  modem::Scenario scenario = load(R"(
[nam]
mdn = "4165550199"
[settings]
spc = "123456"
[lte]
rsrp = -110
[[operators]]
mcc = 2
mnc = 3
short_name = "Grün"
[[nv]]
rde_id = 6000
data = "01 02"
[[faults]]
service = "nas"
message = "get_sig_info"
kind = "error"
error = 93
)");
  modem::State& state = scenario.state;
  EXPECT_EQ(modem::load_nam(state.nv).mdn, "4165550199");
  EXPECT_EQ(modem::load_nam(state.nv).min, "9135550142");
  EXPECT_EQ(modem::load_settings(state.nv).spc, "123456");
  EXPECT_EQ(state.lte.rsrp, -110);
  EXPECT_EQ(state.lte.channel_third_value, 25);
  ASSERT_EQ(state.operators.size(), 1U);
  EXPECT_EQ(state.operators[0].short_name, "Grün");
  EXPECT_EQ(*state.nv.find({6000}), (modem::Bytes{1, 2}));
  ASSERT_EQ(scenario.faults.size(), 1U);
  EXPECT_EQ(scenario.faults[0].error, 93);
}

TEST(ScenarioFile, ErrorsNameFileAndLine) {
  EXPECT_EQ(error_of("[lte]\nrssi = 25\nmcc = 1000\n"),
            "scenario.toml:3: lte.mcc: 1000 is out of range (0 to 999)");
  EXPECT_EQ(error_of("[lte]\n\nfrequency = 1900\n"), "scenario.toml:3: lte.frequency: unknown key");
  EXPECT_EQ(error_of("\n[lte2]\n"), "scenario.toml:2: lte2: unknown key");
  EXPECT_EQ(error_of("[[nv]]\nrde_id = 1\ndata = \"00\"\n[[nv]]\nrde_id = 1979-05-27\n"),
            "scenario.toml:5: nv[1].rde_id: expected a number (0 to 4294967295)");
  EXPECT_EQ(error_of("[carrier]\ntot_order = [\n1,\n2.5]\n"),
            "scenario.toml:4: carrier.tot_order[1]: expected a number (0 to 4294967295)");
  EXPECT_EQ(error_of("[[faults]]\nkind = \"tired\"\n"),
            "scenario.toml:2: faults[0].kind: unknown kind of fault \"tired\"");
}

TEST(ScenarioFile, MissingValueIsReportedAtTheLineOfItsTable) {
  EXPECT_EQ(error_of("\n[[nv]]\nrde_id = 1\n[[nv]]\ndata = \"00\"\n"),
            "scenario.toml:4: nv[1].rde_id: is missing");
}

TEST(ScenarioFile, SyntaxErrorsNameFileAndLineOnOneLine) {
  std::string error = error_of("[lte]\nmcc = \n");
  EXPECT_EQ(error.substr(0, 17), "scenario.toml:2: ");
  EXPECT_EQ(error.find('\n'), std::string::npos);
}

std::string repeated(const std::string& text, size_t times) {
  std::string all;
  for (size_t i = 0; i < times; ++i) all += text;
  return all;
}

constexpr size_t kMany = 200'000;
std::string too_deep_in(int line) {
  return "scenario.toml:" + std::to_string(line) + ": is nested deeper than 64 levels";
}

TEST(ScenarioFile, KeysOfTooManyPartsAreRefused) {
  std::string key = repeated("a.", kMany) + "a";
  EXPECT_EQ(error_of("\n" + key + " = 1\n"), too_deep_in(2));
  EXPECT_EQ(error_of("[" + key + "]\n"), too_deep_in(1));
  EXPECT_EQ(error_of("[[" + key + "]]\n"), too_deep_in(1));
  EXPECT_EQ(error_of(repeated("\"a b\" . ", kMany) + "a = 1\n"), too_deep_in(1));
  EXPECT_EQ(error_of("# a \"quote\n" + key + " = 1\n"), too_deep_in(2));
  EXPECT_EQ(error_of("x = '''\n''''\n" + key + " = 1\n"), too_deep_in(3));
  EXPECT_EQ(error_of("x = \"\\\"\"\n" + key + " = 1\n"), too_deep_in(2));
}

TEST(ScenarioFile, TooManyBracketsAreRefused) {
  EXPECT_EQ(error_of("x = " + repeated("[", kMany)), too_deep_in(1));
  EXPECT_EQ(error_of("x = " + repeated("{a=", kMany)), too_deep_in(1));
  EXPECT_EQ(error_of("x = [\n" + repeated("{a=[", kMany)), too_deep_in(2));
}

TEST(ScenarioFile, LevelsOfHeadersKeysAndBracketsAddUp) {
  std::string half = repeated("a.", 29) + "a";
  std::string rest = half + " = {b.b.b.b.b.b = 1}\n";
  EXPECT_EQ(error_of("[" + half + "]\n" + rest), too_deep_in(2));
  EXPECT_EQ(error_of("[" + half + "]\nx = 1\n[c]\n" + rest), "scenario.toml:1: a: unknown key");
}

TEST(ScenarioFile, DotsInStringsCommentsAndNumbersAreNotLevels) {
  std::string points = repeated(".", kMany);
  EXPECT_EQ(error_of("x = \"" + points + "\"\n"), "scenario.toml:1: x: unknown key");
  EXPECT_EQ(error_of("x = '''" + points + "\n'''\n"), "scenario.toml:1: x: unknown key");
  EXPECT_EQ(error_of("# " + points + "\nx = 1\n"), "scenario.toml:2: x: unknown key");
  EXPECT_EQ(error_of("x = [" + repeated("1.5,\n", 1000) + "]\n"),
            "scenario.toml:1: x: unknown key");
}

TEST(ScenarioFile, AFileThatIsTooLongIsAnError) {
  EXPECT_EQ(error_of(repeated("# a comment that says nothing\n", kMany)),
            "scenario.toml: is longer than 4194304 bytes");
}

TEST(ScenarioFile, MissingFileIsAnError) {
  EXPECT_THROW(modem::load_scenario("/no/such/file.toml"), modem::ScenarioError);
}

}  // namespace
