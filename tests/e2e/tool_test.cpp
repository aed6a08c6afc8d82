// SPDX-License-Identifier: Apache-2.0
// The tool's executable with real daemons and modems.

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/handset.h"
#include "tools/qorextctl/frames/decode.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST(Tool, PrintsAReplyAsText) {
  CommandResult result = run_tool("request nv-read rde-id=28");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  auto lines = lines_of(result.output);
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_THAT(lines[0], StartsWith("nv-read (0x02000016): success"));
  lines.erase(lines.begin());
  EXPECT_THAT(lines, ElementsAre("  rde-id:  28", "  record:  0", "  offset:  0", "  length:  1",
                                 "  data:    06"));
}

TEST(Tool, PrintsAReplyAsJson) {
  CommandResult result = run_tool("--json request nv-read rde-id=28");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            R"({"type":"reply","name":"nv-read","id":"0x02000016","status":0,)"
            R"("status_name":"success","length":21,)"
            R"("fields":{"rde_id":28,"record":0,"offset":0,"length":1,"data":"06"},"problems":[],)"
            R"("hex":"16000002150000000000000000000000)"
            R"(00001C00000000000000000000000100000006000000000000","second":false})"
            "\n");
}

TEST(Tool, SendsRawBytes) {
  CommandResult result = run_tool("raw 14000002 00000000 00000000 000000000000");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(lines_of(result.output), Contains("  hex: 1400000200000000060000000000000000000000"));
  EXPECT_EQ(run_tool("--json raw FF").status, 1);
}

TEST(Tool, MasksTheLogThatItPrintsAfterAFailure) {
  const std::string session = "nv-write rde-id=32 data=323436383130\nnv-read rde-id=7000\n";
  CommandResult masked = run_tool("session", session);
  EXPECT_EQ(masked.status, 1);
  EXPECT_THAT(masked.errors, HasSubstr("the daemon's log, last "));
  EXPECT_THAT(masked.errors, HasSubstr("HexDump: Data ************\n"));
  EXPECT_THAT(masked.errors, Not(HasSubstr("323436383130")));
  EXPECT_THAT(run_tool("--show-personal session", session).errors,
              HasSubstr("HexDump: Data 323436383130\n"));
}

TEST(Tool, HasAnExitStatusForAFailureStatus) {
  CommandResult result = run_tool("--json request nv-read rde-id=7000");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr(R"("status":5,"status_name":"failure","length":0)"));
  EXPECT_THAT(result.errors, HasSubstr("NV Read fail - 0, result - 1, error - 16"));
}

TEST(Tool, ReportsTheEndOfTheDaemon) {
  CommandResult result = run_tool("--daemon-program /bin/true request nv-read rde-id=28");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, HasSubstr("the daemon ended with exit status 0"));
}

TEST(Tool, ReportsAMissingModem) {
  CommandResult result =
      run_tool("--timeout 0.5 --modem unix:/nonexistent/modem request nv-read rde-id=28");
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.errors, HasSubstr("no reply to nv-read within 0.5 s; --log shows why"));
}

TEST(Tool, ListsAllRequestsOrOne) {
  CommandResult all = run_tool("list");
  EXPECT_EQ(all.status, 0);
  for (const char* name : {"nv-read", "set-nam", "get-lte-data", "operator-name", "generic"}) {
    EXPECT_THAT(all.output, HasSubstr(name));
  }
  CommandResult one = run_tool("--json list set-bsr-timer");
  EXPECT_EQ(one.status, 0);
  EXPECT_EQ(lines_of(one.output).size(), 1U);
  EXPECT_THAT(one.output, HasSubstr(R"("name":"set-bsr-timer")"));
  EXPECT_THAT(one.output, HasSubstr(R"("id":"0x020000BD")"));
  EXPECT_EQ(run_tool("list no-such-request").status, 2);
}

// The tool with a modem that is already running.
class GivenModem : public testing::Test {
 protected:
  GivenModem() { handset.start_modem(); }

  CommandResult run(const std::string& words, const std::string& input = "") {
    return run_tool("--modem " + handset.phone().modem() + " --control " +
                        handset.phone().control_socket() + " " + words,
                    input);
  }

  Handset handset{Handset::off};
};

TEST_F(GivenModem, ReceivesNothingAfterAUsageError) {
  for (const char* words :
       {"request nv-raed rde-id=28", "request nv-read", "request nv-read rde-id=x",
        "request nv-read rde-id=28 bogus=1", "request set-nam spc=1", "raw 0", "raw XY",
        "request write-akey spc=000000 akey=1", "bogus", "", "--timeout x request get-nam"}) {
    SCOPED_TRACE(words);
    CommandResult result = run(words);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(lines_of(result.errors).size(), 1U) << result.errors;
  }
  EXPECT_THAT(handset.modem_requests(), IsEmpty());
}

TEST_F(GivenModem, KeepsItsStateBetweenRuns) {
  EXPECT_EQ(run("request set-bsr-timer timer=77").status, 0);
  EXPECT_THAT(run("--json request get-bsr-timer").output, HasSubstr(R"("fields":{"timer":77})"));
  EXPECT_EQ(handset.modem().value("state", "/state/carrier/bsr_timer"), "77");
  EXPECT_THAT(run("--json modem nv 28").output, HasSubstr(R"("data":"06")"));
}

TEST_F(GivenModem, ServesASessionOfManyRequests) {
  CommandResult result = run("--json session",
                             "nv-write rde-id=7000 data=0102  # kept\n"
                             "\n"
                             "nv-read rde-id=7000\n"
                             "modem nv 7000\n"
                             "set-profile profile=4\n");
  EXPECT_EQ(result.status, 0) << result.errors;
  auto lines = lines_of(result.output);
  ASSERT_EQ(lines.size(), 6U) << result.output;
  EXPECT_THAT(lines[0], HasSubstr(R"("name":"nv-write")"));
  EXPECT_THAT(lines[1], HasSubstr(R"("data":"0102")"));
  EXPECT_THAT(lines[2], HasSubstr(R"("data":"0102")"));
  EXPECT_THAT(lines[3], HasSubstr(R"("second":false)"));
  EXPECT_THAT(lines[4], HasSubstr(R"("status":6)"));
  EXPECT_THAT(lines[4], HasSubstr(R"("second":true)"));
  EXPECT_EQ(lines[5], R"({"type":"exit","status":0,"signal":null})");
}

TEST_F(GivenModem, ServesTheLinesAfterAWrongOne) {
  CommandResult result = run("session", "nv-raed rde-id=1\nset-bsr-timer timer=5\n");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors, HasSubstr("line 1: "));
  EXPECT_THAT(result.output, HasSubstr("set-bsr-timer (0x020000BD): success"));
  EXPECT_EQ(handset.modem().value("state", "/state/carrier/bsr_timer"), "5");
}

TEST_F(GivenModem, IsLoadedWithAMixOfRequests) {
  CommandResult result =
      run("--json load --count 200 --rate 2000 --mix nv-read:3,get-nam:1,unknown:2 --seed 5");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
  auto lines = lines_of(result.output);
  ASSERT_EQ(lines.size(), 4U) << result.output;
  size_t count = 0;
  for (size_t i = 0; i < 3; ++i) {
    auto object = qorextctl::Json::parse(lines[i]);
    EXPECT_EQ(object["failed"], 0) << lines[i];
    EXPECT_GT(object["latency_ms"]["p50"], 0) << lines[i];
    EXPECT_GE(object["latency_ms"]["max"], object["service_ms"]["max"]) << lines[i];
    count += object["count"].get<size_t>();
  }
  EXPECT_EQ(count, 200U);
  EXPECT_EQ(qorextctl::Json::parse(lines[3])["count"], 200);
}

TEST_F(GivenModem, CountsTheFailuresOfALoad) {
  CommandResult result =
      run("load --count 10 --mix-file /proc/self/fd/0", "1 nv-read rde-id=7777\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, HasSubstr("nv-read                      10      10"));
}

// "./dev run" plays this session.
TEST(Demo, EndsWithStatusZero) {
  CommandResult result = run_tool("--json session <" QOREXT_DEMO);
  EXPECT_EQ(result.status, 0) << result.errors;
  auto lines = lines_of(result.output);
  EXPECT_THAT(lines, Not(Contains(HasSubstr(R"("type":"error")"))));
  for (const char* name : {"nv-read", "read-item-10003", "verify-subsidy-lock", "get-nam",
                           "set-nam", "get-lte-data", "get-call-processing", "get-evdo"}) {
    EXPECT_THAT(lines, Contains(HasSubstr(std::string(R"("name":")") + name + R"(")")));
  }
  EXPECT_THAT(lines, Contains(HasSubstr(R"("id":"0x050506")")));
  EXPECT_THAT(lines, Contains(HasSubstr(R"("id":"0x02000014")")));
  EXPECT_THAT(lines, Contains(HasSubstr(R"("name":"kpi-record")")));
  EXPECT_THAT(lines, Contains(HasSubstr(R"("answers":["saved"])")));
  EXPECT_THAT(lines, Contains(HasSubstr(R"("use":"current","size":24)")));
  EXPECT_THAT(lines, Contains(HasSubstr(R"("hand_off_block":"saved")")));
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), R"({"type":"exit","status":0,"signal":null})");
}

}  // namespace
}  // namespace e2e
