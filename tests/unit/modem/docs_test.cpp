// SPDX-License-Identifier: Apache-2.0
// Checks the examples of the modem's pages.
#include <fstream>
#include <sstream>

#include "modem/scenario.h"
#include "modem/state/state_keys.h"
#include "tests/unit/modem/modem_test.h"

namespace {

// The content of the code blocks that begin with this fence.
std::vector<std::string> blocks_of(const std::string& page, const std::string& fence) {
  std::ifstream stream(std::string(QOREXT_DOCS_PATH) + "/" + page);
  std::vector<std::string> blocks;
  bool is_inside = false;
  bool is_wanted = false;
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("```")) {
      is_inside = !is_inside;
      is_wanted = is_inside && line == fence;
      if (is_wanted) blocks.emplace_back();
    } else if (is_wanted) {
      blocks.back() += line + "\n";
    }
  }
  return blocks;
}

// Not for answers with a time, or shown in part.
bool is_exact(const std::string& answer) {
  return answer.find("...") == std::string::npos && answer.find("\"time\"") == std::string::npos;
}

class Docs : public ControlTest {};

TEST_F(Docs, ControlExamplesAreAnsweredAsShown) {
  int checked = 0;
  for (const std::string& block : blocks_of("modem-control.md", "```")) {
    std::istringstream lines(block);
    for (std::string request, answer;
         std::getline(lines, request) && std::getline(lines, answer);) {
      std::string given = control.answer(request);
      if (is_exact(answer)) {
        EXPECT_EQ(json::parse(given), json::parse(answer)) << request;
      }
      EXPECT_EQ(json::parse(given)["ok"], answer.find("\"ok\":true") != std::string::npos);
      ++checked;
    }
  }
  EXPECT_GE(checked, 12);
}

TEST_F(Docs, ScenarioExamplesLoad) {
  auto blocks = blocks_of("scenarios.md", "```toml");
  EXPECT_GE(blocks.size(), 2U);
  for (const std::string& block : blocks) EXPECT_NO_THROW(modem::read_scenario(block, "")) << block;
}

TEST_F(Docs, EveryKeyOfTheStateIsInTheScenarioPage) {
  std::ifstream stream(std::string(QOREXT_DOCS_PATH) + "/scenarios.md");
  std::string page{std::istreambuf_iterator<char>(stream), {}};
  for (const modem::Key& key : modem::state_keys()) {
    std::string name = key.path.substr(key.path.rfind('.') + 1);
    if (name.ends_with("[]")) continue;
    bool is_on_page = page.find("`" + name + "`") != std::string::npos ||
                      page.find("." + name + "`") != std::string::npos;
    EXPECT_TRUE(is_on_page) << key.path;
  }
}

}  // namespace
