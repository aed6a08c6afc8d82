// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "tests/soak/soak.h"

namespace {

soak::Options g_options;

TEST(Soak, EveryReplyIsCorrectAndNothingGrows) {
  soak::Soak run(g_options);
  run.run();
  run.report();
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  CLI::App app(
      "Mixed requests and indications in one run of the daemon, with injected modem faults.",
      "soak");
  app.add_option("--requests", g_options.requests)->check(CLI::Range(1000U, 100000000U));
  app.add_option("--indications", g_options.indications)->check(CLI::Range(0U, 10000000U));
  app.add_option("--seed", g_options.seed);
  CLI11_PARSE(app, argc, argv);
  return RUN_ALL_TESTS();
}
