// SPDX-License-Identifier: Apache-2.0
#include "tools/qorextctl/load/load.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/unit/qorextctl/fake_setup.h"
#include "tools/qorextctl/load/load_report.h"

namespace qorextctl {
namespace {

using testing::HasSubstr;

std::vector<std::string> names_of(const Mix& mix, uint32_t seed, size_t count) {
  std::mt19937 random(seed);
  std::vector<std::string> names;
  for (size_t i = 0; i < count; ++i) names.push_back(mix.choose(random).name);
  return names;
}

Mix mix_of_text(const std::string& text) {
  auto mix = Mix::parse(text);
  EXPECT_TRUE(mix) << mix.error().message;
  return mix ? *mix : Mix();
}

TEST(Mix, SendsRequestsByWeight) {
  auto names = names_of(mix_of_text("nv-read:3,get-nam"), 1, 4000);
  EXPECT_NEAR(static_cast<double>(std::count(names.begin(), names.end(), "nv-read")), 3000, 150);
}

TEST(Mix, RepeatsTheRequestsOfASeed) {
  Mix mix = mix_of_text("nv-read:3,get-nam:1,unknown:2");
  EXPECT_EQ(names_of(mix, 7, 100), names_of(mix, 7, 100));
  EXPECT_NE(names_of(mix, 7, 100), names_of(mix, 8, 100));
}

TEST(Mix, TakesRequiredArgumentsFromCompletion) {
  EXPECT_EQ(to_hex(mix_of_text("set-ddtm").entries().at(0).bytes),
            "B8000002010000000000000000000000000001");
}

TEST(Mix, ExpectsAnUnknownRequestToFail) {
  MixEntry entry = mix_of_text("unknown").entries().at(0);
  EXPECT_TRUE(entry.expects_failure);
  EXPECT_EQ(entry.name, "unknown");
}

TEST(Mix, ReportsErrors) {
  EXPECT_EQ(Mix::parse("get-nam:0").error().message,
            "weight '0': expected a number (1 to 1000000)");
  EXPECT_EQ(Mix::parse("get-nam:x").error().message,
            "weight 'x': expected a number (1 to 1000000)");
  EXPECT_THAT(Mix::parse("get-nma").error().message, HasSubstr("did you mean 'get-nam'?"));
  EXPECT_THAT(Mix::parse("set-bsr-timer").error().message,
              HasSubstr("timer (timer value) is missing"));
  EXPECT_THAT(Mix::parse("").error().message, HasSubstr("--mix: expected requests"));
}

class MixFile : public testing::Test {
 protected:
  ~MixFile() override { std::filesystem::remove(path_); }

  Result<Mix> read(const std::string& text) {
    std::ofstream(path_) << text;
    return Mix::read(path_);
  }

  std::string path_ = "/tmp/mix_" + std::to_string(getpid());
};

TEST_F(MixFile, HasAWeightAndASessionLinePerLine) {
  auto mix = read("# a comment\n\n3 nv-read rde-id=28\n1 expect-failure raw 14000002 00000000\n");
  ASSERT_TRUE(mix) << mix.error().message;
  ASSERT_EQ(mix->entries().size(), 2U);
  EXPECT_EQ(mix->entries()[0].name, "nv-read");
  EXPECT_EQ(mix->entries()[0].weight, 3U);
  EXPECT_EQ(mix->entries()[1].name, "raw");
  EXPECT_EQ(mix->entries()[1].request, nullptr);
  EXPECT_TRUE(mix->entries()[1].expects_failure);
}

TEST_F(MixFile, ReportsErrorsWithFileAndLine) {
  EXPECT_EQ(read("1 get-nam\nnv-read\n").error().message,
            path_ + ":2: weight 'nv-read': expected a number (1 to 1000000)");
  EXPECT_THAT(read("1 frob\n").error().message, HasSubstr(path_ + ":1: unknown request 'frob'"));
  EXPECT_EQ(read("1 'get-nam\n").error().message, path_ + ":1: a quote is not closed");
  EXPECT_EQ(read("1 get-nam\n1 " + std::string(1 << 20, 'x') + "\n").error().message,
            path_ + ":2: is longer than 1048576 bytes");
  EXPECT_THAT(read("1\n").error().message, HasSubstr(":1: no request given"));
  EXPECT_EQ(read("").error().message, path_ + ": contains no request");
  EXPECT_EQ(Mix::read("/nowhere").error().message, "cannot read '/nowhere'");
}

TEST(Quantile, IsOneOfTheValues) {
  std::vector<float> values;
  for (int i = 100; i >= 1; --i) values.push_back(static_cast<float>(i));
  for (auto [share, value] : {std::pair(0.0, 1), {0.5, 50}, {0.9, 90}, {0.99, 99}, {1, 100}}) {
    EXPECT_EQ(quantile(values, share), value);
  }
  EXPECT_EQ(quantile(std::vector<float>{3}, 0.5), 3);
}

LoadReport report() {
  LoadReport made;
  made.add("b", {0.05, 0.04}, false);
  made.add("b", {0.2, 0.1}, false);
  made.add("a", {1.5, 1.0}, true);
  made.set_seconds(2);
  return made;
}

TEST(LoadReport, HasATableAndAHistogram) {
  EXPECT_EQ(report().text(),
            "request                   count  failed       min       p50       p90       p99       "
            "max  ms\n"
            "a                             1       1     1.500     1.500     1.500     1.500     "
            "1.500\n"
            "b                             2       0     0.050     0.050     0.200     0.200     "
            "0.200\n"
            "3 requests in 2.000 s, 1.5 a second, 1 failed\n"
            "  up to      0.062 ms         1 ########################################\n"
            "  up to      0.125 ms         0\n"
            "  up to      0.250 ms         1 ########################################\n"
            "  up to      0.500 ms         0\n"
            "  up to      1.000 ms         0\n"
            "  up to      2.000 ms         1 ########################################\n");
}

TEST(LoadReport, HasAnObjectPerNameAndATotal) {
  auto objects = report().objects();
  ASSERT_EQ(objects.size(), 3U);
  EXPECT_EQ(objects[1].dump(),
            R"({"type":"load","name":"b","count":2,"failed":0,)"
            R"("latency_ms":{"min":0.05,"p50":0.05,"p90":0.2,"p99":0.2,"max":0.2},)"
            R"("service_ms":{"min":0.04,"p50":0.04,"p90":0.1,"p99":0.1,"max":0.1}})");
  EXPECT_EQ(objects[2]["type"], "load-total");
  EXPECT_EQ(objects[2]["count"], 3);
  EXPECT_EQ(objects[2]["failed"], 1);
  EXPECT_EQ(objects[2]["rate"], 1.5);
  EXPECT_EQ(objects[2]["histogram"].size(), 6U);
}

TEST(Exchanges, AreDueAtTheirRateAlsoAfterALateOne) {
  std::vector<double> latencies;
  double seconds = run_exchanges(
      3, 1000, [](size_t, Deadline::Clock::time_point) { return true; },
      [&] {
        if (latencies.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(20));
      },
      [&](const Timing& timing) { latencies.push_back(timing.latency); });
  ASSERT_EQ(latencies.size(), 3U);
  EXPECT_GE(latencies[2], 20 - 2);
  EXPECT_GE(seconds, 0.02);
}

TEST(Exchanges, EndWhenTheWaitReturnsFalse) {
  size_t done = 0;
  run_exchanges(
      10, 0, [](size_t number, Deadline::Clock::time_point) { return number < 4; }, [] {},
      [&](const Timing&) { ++done; });
  EXPECT_EQ(done, 4U);
}

TEST(Progress, ShowsCountsRateAndTimeLeft) {
  EXPECT_EQ(progress_text(0, 10, 0), "[..............................] 0/10");
  EXPECT_EQ(progress_text(5, 10, 2), "[###############...............] 5/10, 2 a second, 2 s left");
  EXPECT_EQ(progress_text(10, 10, 4),
            "[##############################] 10/10, 2 a second, 0 s left");
}

class LoadOn : public WithFakeDaemon {
 protected:
  LoadOn() {
    launch_.daemon_executable = FAKE_DAEMON;
    launch_.setup.modem = "unix:/m";
    launch_.timeout = 0.2;
    load_.count = 20;
    load_.mix = "set-ddtm";
  }

  Outcome run(const char* mode) {
    set_mode(mode);
    auto mix = mix_of(load_);
    EXPECT_TRUE(mix) << mix.error().message;
    auto session = Session::start(launch_, printer_);
    EXPECT_TRUE(session) << session.error().message;
    Outcome outcome = run_load(**session, load_, *mix, printer_);
    return (*session)->finish(outcome, false);
  }

  LaunchOptions launch_;
  LoadOptions load_;
};

TEST_F(LoadOn, ADaemonThatRepliesIsASuccess) {
  EXPECT_EQ(run("answer"), Outcome::success);
  EXPECT_THAT(out_.str(), HasSubstr("set-ddtm                     20       0"));
  EXPECT_THAT(out_.str(), Not(HasSubstr("set-ddtm (0x020000B8)")));
  EXPECT_EQ(err_.str(), "");
}

TEST_F(LoadOn, RefusalsCountAsFailed) {
  EXPECT_EQ(run("refuse"), Outcome::refused);
  EXPECT_THAT(out_.str(), HasSubstr("set-ddtm                     20      20"));
}

TEST_F(LoadOn, AMissingReplyEndsTheRun) {
  EXPECT_EQ(run("silent"), Outcome::transport);
  EXPECT_EQ(out_.str(), "");
}

TEST_F(LoadOn, TheExitOfTheDaemonEndsTheRun) {
  EXPECT_EQ(run("end"), Outcome::transport);
  EXPECT_EQ(out_.str(), "");
  EXPECT_THAT(err_.str(), HasSubstr("the daemon ended with exit status 3"));
}

TEST_F(LoadOn, TheTimeLimitEndsTheRun) {
  load_.rate = 10;
  load_.time_limit = 0.15;
  EXPECT_EQ(run("answer"), Outcome::transport);
  EXPECT_THAT(err_.str(), HasSubstr("of 20 requests were sent within 0.15 s"));
}

TEST_F(LoadOn, ARateSpreadsTheRequests) {
  load_.rate = 100;
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(run("answer"), Outcome::success);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(190));
}

}  // namespace
}  // namespace qorextctl
