// SPDX-License-Identifier: Apache-2.0
// The printed pages are those of the present tables.
#include "tools/docs/pages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "modem/messages/services.h"
#include "modem/scenario.h"
#include "modem/state/state.h"
#include "tools/qorextctl/frames/protocol.h"

namespace docs {
namespace {

using nlohmann::json;
using testing::HasSubstr;

std::string content_of(const std::string& file) {
  std::ifstream stream(std::string(QOREXT_DOCS) + "/" + file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(Pages, AreUpToDate) {
  for (const Page& page : pages()) {
    EXPECT_TRUE(content_of(page.file) == page.text())
        << "docs/" << page.file << " is not up to date: run ./dev docs";
  }
}

TEST(Pages, DescribeEachRequestAndEachUnsolicitedFrame) {
  std::string page = host_protocol();
  for (const qorextctl::Request& request : qorextctl::catalogue()) {
    EXPECT_THAT(page, HasSubstr("\n### " + std::string(request.name) + "\n"));
  }
  for (const auto& message : qorextctl::unsolicited_messages()) {
    EXPECT_THAT(page, HasSubstr("\n### unsolicited " + std::string(message.name) + "\n"));
  }
}

TEST(Pages, DescribeEachElementOfEachMessage) {
  std::string page = modem_messages();
  for (const qmi_idl::Service* service : modem::services()) {
    for (const qmi_idl::Message& message : service->messages) {
      for (const qmi_idl::Element& element : message.elements) {
        EXPECT_THAT(page, HasSubstr("`" + std::string(element.name) + "`"));
      }
    }
  }
}

// "a.b" as {"a":{"b":value}}, "a[].b" as {"a":[{"b":value}]}.
json nested(const std::string& path, const json& value) {
  size_t dot = path.find('.');
  std::string name = path.substr(0, dot);
  bool is_list = name.size() > 2 && name.substr(name.size() - 2) == "[]";
  if (is_list) name.resize(name.size() - 2);
  json inner = dot == std::string::npos ? value : nested(path.substr(dot + 1), value);
  return {{name, is_list ? json::array({inner}) : inner}};
}

// Adds the required keys of a list's entries.
void complete(json& scenario) {
  if (scenario.contains("nv")) scenario["nv"][0].emplace("rde_id", 1);
  if (scenario.contains("faults")) scenario["faults"][0].emplace("kind", "silent");
}

TEST(ScenarioKeys, AreTakenWithTheirDefaults) {
  modem::Scenario scenario{modem::factory_state(), {}};
  size_t taken = 0;
  for (const modem::Key& key : modem::Archive::keys_of(scenario)) {
    if (key.value.empty()) continue;
    json given = nested(key.path, json::parse(key.value));
    complete(given);
    EXPECT_NO_THROW(modem::Archive::from_json(given, "", scenario)) << given;
    ++taken;
  }
  EXPECT_GT(taken, 100U);
}

TEST(ScenarioKeys, AreAllThatTheStateHas) {
  modem::Scenario scenario{modem::factory_state(), {}};
  std::string page = scenario_keys();
  json state = modem::Archive::to_json(scenario).flatten();
  for (const auto& [pointer, value] : state.items()) {
    std::string name = pointer.substr(pointer.find_last_of('/') + 1);
    if (isdigit(static_cast<unsigned char>(name[0])) != 0) continue;
    bool is_documented = page.find("." + name + "`") != std::string::npos ||
                         page.find("`" + name + "`") != std::string::npos ||
                         page.find("`" + name + "[]`") != std::string::npos;
    EXPECT_TRUE(is_documented) << pointer;
  }
}

}  // namespace
}  // namespace docs
