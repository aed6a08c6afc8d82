// SPDX-License-Identifier: Apache-2.0
// Two instances of the daemon on one modem: every upload reaches both.
#include "tests/e2e/support/daemon.h"
#include "tests/e2e/support/handset.h"
#include "tests/e2e/support/vorn.h"

namespace e2e {
namespace {

constexpr unsigned kPackages = 40;
constexpr size_t kPackageSize = 1700;

std::string package_text(unsigned package) {
  return "<" + std::to_string(package) + ":" + random_log(kPackageSize) + ">";
}

class TwoInstances : public testing::Test {
 protected:
  TwoInstances() {
    qorextctl::DaemonOptions options;
    options.instance = 1;
    options.modem = first.phone().modem();
    second = start_daemon(second_phone, options);
    EXPECT_TRUE(second->log().find("Child process waiting for data", 0, time_limit()));
  }

  Handset first;
  PhoneRoot second_phone;
  std::unique_ptr<qorextctl::Daemon> second;
};

TEST_F(TwoInstances, EachStoresEveryPackageInItsOwnDirectory) {
  std::string all;
  for (unsigned package = 1; package <= kPackages; ++package) {
    upload_in_packets(first.modem(), package, package_text(package));
    all += package_text(package);
  }
  first.indicate("generic");
  EXPECT_NE(first.next_message(), "nothing");
  EXPECT_NE(next_message(*second), "nothing");
  for (PhoneRoot* phone : {&first.phone(), &second_phone}) {
    VornFolder vorn(*phone);
    EXPECT_TRUE(vorn.content(vorn.linked(1)) == all);
  }
}

}  // namespace
}  // namespace e2e
