// SPDX-License-Identifier: Apache-2.0
// The scenario files that come with the modem.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>

#include "tests/e2e/support/command.h"
#include "tests/unit/qorextctl/request_samples.h"
#include "tools/qorextctl/frames/decode.h"

namespace e2e {
namespace {

using qorextctl::Json;
using testing::Each;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

// Returns the replies to the session's lines on a modem with this scenario.
std::vector<Json> replies(const std::string& scenario, const std::string& lines) {
  CommandResult result =
      run_tool("--json --scenario " QOREXT_SCENARIOS "/" + scenario + " session", lines);
  std::vector<Json> objects;
  for (const std::string& line : lines_of(result.output)) {
    Json object = Json::parse(line);
    if (object["type"] == "reply") objects.push_back(object);
  }
  return objects;
}

std::vector<int> statuses(const std::vector<Json>& all) {
  std::vector<int> statuses;
  for (const Json& reply : all) statuses.push_back(reply["status"]);
  return statuses;
}

TEST(FactoryFreshPhone, IsNotProvisioned) {
  auto all = replies("factory-fresh.toml",
                     "get-nam\nget-apn\nget-tot\nget-bsr-timer\nget-lte-data\n"
                     "nv-read rde-id=32\ndata-plmn\nnv-read rde-id=10003\n");
  EXPECT_THAT(statuses(all), ElementsAre(0, 0, 0, 0, 0, 0, 5, 5));
  ASSERT_EQ(all.size(), 8U);
  EXPECT_EQ(all[0]["fields"]["mdn"], "000000000000000");
  EXPECT_EQ(all[0]["fields"]["min"], "0000000000");
  EXPECT_EQ(all[0]["fields"]["sid"], 0);
  EXPECT_EQ(all[0]["fields"]["nid"], 65535);
  EXPECT_EQ(all[1]["fields"]["count"], 0);
  EXPECT_EQ(all[2]["fields"]["count"], 0);
  EXPECT_EQ(all[3]["fields"]["timer"], 0);
  EXPECT_EQ(all[4]["fields"]["service_state"], 0);
  EXPECT_EQ(all[5]["fields"]["data"], "303030303030");
}

TEST(FactoryFreshPhone, CanBeProvisioned) {
  auto all = replies("factory-fresh.toml",
                     "set-nam spc=000000 mdn=5551234567 min=5557654321 sid=4139\nget-nam\n");
  EXPECT_THAT(statuses(all), Each(0));
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[1]["fields"]["min"], "5557654321");
  EXPECT_EQ(all[1]["fields"]["sid"], 4139);
}

// Without a usable answer from the modem, these replies contain zeros.
TEST(FlakyModem, AffectsSingleReplies) {
  auto all = replies("flaky-modem.toml",
                     "get-bsr-timer\nget-bsr-timer\nget-tot\nget-tot\nget-tot\nget-lte-data\n"
                     "get-lte-data\n");
  EXPECT_THAT(statuses(all), ElementsAre(0, 0, 0, 0, 0, 5, 0));
  ASSERT_EQ(all.size(), 7U);
  EXPECT_EQ(all[0]["fields"]["timer"], 0);
  EXPECT_EQ(all[1]["fields"]["timer"], 300);
  EXPECT_EQ(all[3]["fields"]["count"], 0);
  EXPECT_EQ(all[4]["fields"]["count"], 3);
}

TEST(FlakyModem, CannotConfuseRepliesWithStrayAnswers) {
  auto all = replies("flaky-modem.toml", "get-apn\nget-apn\nget-apn\n");
  EXPECT_EQ(all.size(), 3U);
  for (const Json& reply : all) EXPECT_EQ(reply["fields"]["count"], 2);
}

TEST(FlakyModem, IsSlowAtFirst) {
  auto start = std::chrono::steady_clock::now();
  auto all = replies("flaky-modem.toml", "get-bc10\n");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1200));
  EXPECT_THAT(statuses(all), ElementsAre(0));
}

TEST(CarrierLab, IsProvisioned) {
  auto all = replies("carrier-lab.toml",
                     "get-nam\nget-sid-nid\nnv-read rde-id=32\nverify-subsidy-lock code=271828\n"
                     "operator-name mcc=1 mnc=11\nget-apn\nget-tot\nget-bsr-timer\nget-ddtm\n"
                     "get-lte-data\nnv-read rde-id=7100\n");
  EXPECT_THAT(statuses(all), Each(0));
  ASSERT_EQ(all.size(), 11U);
  EXPECT_EQ(all[0]["fields"]["mdn"], "555555012300000");
  EXPECT_EQ(all[0]["fields"]["imsi_t"], "001105555550187");
  EXPECT_EQ(all[1]["fields"]["pairs"][0]["sid"], 4139);
  EXPECT_EQ(all[2]["fields"]["data"], "333134313539");
  EXPECT_EQ(all[4]["fields"]["name"], "Lab B");
  EXPECT_EQ(all[5]["fields"]["apns"][1]["name"], "ims.lab.example");
  EXPECT_EQ(all[6]["fields"]["entries"], Json({5, 3, 2, 1}));
  EXPECT_EQ(all[7]["fields"]["timer"], 60);
  EXPECT_EQ(all[8]["fields"]["ddtm"], 1);
  EXPECT_EQ(all[9]["fields"]["mnc"], 10);
  EXPECT_EQ(all[10]["fields"]["data"], "4C414201");
}

TEST(CarrierLab, RefusesTheFactorysSubsidyLockCode) {
  EXPECT_THAT(statuses(replies("carrier-lab.toml", "verify-subsidy-lock code=246810\n")),
              ElementsAre(3));
}

std::vector<std::string> names_in(const Json& fields) {
  std::vector<std::string> names;
  for (const auto& [name, value] : fields.items()) names.push_back(name);
  return names;
}

std::vector<std::string> documented_names(const std::string& request) {
  std::vector<std::string> names;
  CommandResult result = run_tool("--json list " + request);
  Json row = Json::parse(result.output, nullptr, false);
  if (!row.is_object()) return names;
  for (const Json& field : row["reply_fields"]) names.push_back(field["name"]);
  return names;
}

// Every request of the catalogue: the help lists exactly the fields of a successful reply.
TEST(Help, ListsTheFieldsOfReplies) {
  std::string lines = "modem nv 10017 01\n";
  for (const auto& sample : qorextctl::kRequestSamples) lines += std::string(sample.line) + "\n";
  lines += "operator-name mcc=1 mnc=1\n";
  for (const auto& sample : qorextctl::kPaddedSamples) lines += std::string(sample.line) + "\n";
  CommandResult result = run_tool("--json session", lines);
  std::set<std::string> compared;
  for (const std::string& line : lines_of(result.output)) {
    Json reply = Json::parse(line);
    if (reply["type"] != "reply" || reply["status"] != 0 || reply["fields"].empty()) continue;
    EXPECT_EQ(names_in(reply["fields"]), documented_names(reply["name"])) << line;
    compared.insert(reply["name"]);
  }
  std::set<std::string> missing;
  for (const qorextctl::Request& request : qorextctl::catalogue()) {
    if (request.reply.layout && compared.count(request.name) == 0) missing.insert(request.name);
  }
  // Replies for the two items always fail; the replies to the last two have the name of their id.
  EXPECT_THAT(missing, UnorderedElementsAre("read-item-38", "read-item-39", "generic", "cdma"));
}

}  // namespace
}  // namespace e2e
