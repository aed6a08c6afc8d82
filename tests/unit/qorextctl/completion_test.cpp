// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/session/completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/unit/platform/temp_folder.h"
#include "tools/qorextctl/frames/protocol.h"
#include "tools/qorextctl/frames/values.h"
#include "tools/qorextctl/modem/modem_words.h"
#include "tools/qorextctl/session/session.h"

namespace qorextctl {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

Texts texts_of(const std::vector<Candidate>& candidates) {
  Texts texts;
  for (const Candidate& candidate : candidates) texts.push_back(candidate.text);
  return texts;
}

Texts at_end_of(const std::string& line) { return texts_of(complete_line(line).candidates); }

TEST(Completion, AllRequestsAndCommandsAreCandidates) {
  Texts all = at_end_of("");
  for (const Request& request : catalogue()) EXPECT_THAT(all, Contains(request.name));
  for (const LineCommand& command : Session::commands()) EXPECT_THAT(all, Contains(command.name));
}

TEST(Completion, CandidatesBeginWithTheWord) {
  EXPECT_THAT(at_end_of("nv-"), ElementsAre("nv-read", "nv-write"));
  EXPECT_THAT(at_end_of("  wait-l"), ElementsAre("wait-log"));
  EXPECT_THAT(at_end_of("frob"), IsEmpty());
}

TEST(Completion, TheWordStartsAfterTheLastBlank) {
  Completion completion = complete_line("nv-read rde");
  EXPECT_EQ(completion.start, 8U);
  EXPECT_EQ(completion.common(), "rde-id=");
  EXPECT_EQ(complete_line("nv").common(), "nv-");
}

TEST(Completion, ArgumentsThatAreMissingAreCandidates) {
  EXPECT_THAT(at_end_of("nv-read "), ElementsAre("rde-id=", "record=", "offset=", "length="));
  EXPECT_THAT(at_end_of("nv-read record=0 "), ElementsAre("rde-id=", "offset=", "length="));
  EXPECT_THAT(at_end_of("set-nam "), Contains("json="));
  EXPECT_THAT(at_end_of("get-nam "), IsEmpty());
}

TEST(Completion, ValuesOfAFiniteSetAreCandidates) {
  EXPECT_THAT(at_end_of("set-ddtm ddtm="), ElementsAre("ddtm=1", "ddtm=0"));
  EXPECT_THAT(at_end_of("set-nam vocoder="), testing::SizeIs(7));
  EXPECT_THAT(at_end_of("nv-read rde-id=2"), Contains("rde-id=28"));
  EXPECT_THAT(at_end_of("set-bsr-timer timer="), IsEmpty());
}

TEST(Completion, CandidateValuesAreAcceptedByTheirArguments) {
  for (const Request& request : catalogue()) {
    for (const Argument& argument : request.payload.arguments) {
      std::string key = argument.field.name + std::string("=");
      for (const std::string& text : at_end_of(request.name + std::string(" ") + key)) {
        EXPECT_TRUE(encode(argument, text.substr(key.size()))) << request.name << " " << text;
      }
    }
  }
}

TEST(Completion, TheLineAfterExpectFailureIsCompleted) {
  EXPECT_THAT(at_end_of("expect-failure set-ddtm ddtm="), ElementsAre("ddtm=1", "ddtm=0"));
  EXPECT_THAT(at_end_of("help nv-r"), ElementsAre("nv-read"));
  EXPECT_THAT(at_end_of("phone "), ElementsAre("show"));
}

TEST(Completion, ModemCommandsAndTheirArgumentsAreCandidates) {
  Texts all = at_end_of("modem ");
  for (const ModemCommand& command : modem_commands()) EXPECT_THAT(all, Contains(command.name));
  EXPECT_THAT(at_end_of("modem fault silent me"), ElementsAre("message="));
  EXPECT_THAT(at_end_of("modem service nas "), ElementsAre("up", "down"));
  EXPECT_THAT(at_end_of("modem nv 28 "), ElementsAre("record="));
  EXPECT_THAT(at_end_of("modem hob_save --n"), ElementsAre("--no-wait"));
  EXPECT_THAT(at_end_of("modem hob-save --n"), ElementsAre("--no-wait"));
  EXPECT_THAT(at_end_of("modem set lte.mn"), ElementsAre("lte.mnc="));
}

TEST(Completion, IndicationsAndTheirFieldsAreCandidates) {
  EXPECT_THAT(at_end_of("modem indicate pf"), ElementsAre("pfp"));
  EXPECT_THAT(at_end_of("modem indicate pfp "), Contains("tbl_idx="));
  EXPECT_THAT(at_end_of("modem indicate carrier v"), Contains("value="));
  EXPECT_THAT(at_end_of("modem indicate pfp rat=3 --c"), ElementsAre("--count"));
  EXPECT_THAT(at_end_of("modem indicate frob t"), IsEmpty());
}

TEST(Completion, ServicesRequestsAndFaultsAreCandidates) {
  EXPECT_THAT(at_end_of("modem service "), testing::UnorderedElementsAre("nas", "dms", "qorext"));
  EXPECT_THAT(at_end_of("modem fault "), Contains("stray"));
  EXPECT_THAT(at_end_of("modem fault silent service=d"), ElementsAre("service=dms"));
  EXPECT_THAT(at_end_of("modem fault silent message=element_"),
              ElementsAre("message=element_read", "message=element_write"));
}

TEST(Completion, FilesAreCandidatesForAFileArgument) {
  test_support::TempFolder folder;
  std::filesystem::create_directories(folder / "nams");
  std::ofstream(folder / "nam.json") << "{}";
  EXPECT_THAT(at_end_of("set-nam json=" + folder / "nam."),
              ElementsAre("json=" + folder / "nam.json"));
  EXPECT_THAT(at_end_of("modem kpi --file " + folder / "nams"), ElementsAre(folder / "nams/"));
}

TEST(Completion, WordsOfTheCommandLineAreCompletedLikeThoseOfALine) {
  EXPECT_THAT(texts_of(complete_request({"nv-read", "rde"})), ElementsAre("rde-id="));
  EXPECT_THAT(texts_of(complete_request({"wait-l"})), IsEmpty());
  EXPECT_THAT(texts_of(complete_modem({"hob"})), ElementsAre("hob_save", "hob"));
}

}  // namespace
}  // namespace qorextctl
