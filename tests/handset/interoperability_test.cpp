// SPDX-License-Identifier: Apache-2.0
// Independent QMI programs with the simulated modem.

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/handset.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;

// The lines of an output without their indentation.
std::vector<std::string> trimmed_lines(const std::string& text) {
  auto lines = lines_of(text);
  for (std::string& line : lines) line.erase(0, line.find_first_not_of(" \t"));
  return lines;
}

class Interoperability : public testing::Test {
 protected:
  Interoperability() { handset.start_modem(); }

  std::string lte(const std::string& key) {
    return handset.modem().value("state", "/state/lte/" + key);
  }
  std::string tenths(int64_t value) {
    return fmt::format("{:.1f}", static_cast<double>(value) / 10);
  }

  // The modem is node 1.
  static CommandResult qmicli(const std::string& words) {
    return run_command("qmicli -d qrtr://1 " + words);
  }

  Handset handset{Handset::off};
};

TEST_F(Interoperability, QmicliReadsTheServingSystem) {
  handset.modem().command("set lte.mcc=310 lte.mnc=4 lte.network_description=Prairie");
  CommandResult result = qmicli("--nas-get-serving-system");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(trimmed_lines(result.output),
              IsSupersetOf({std::string("Registration state: 'registered'"),
                            std::string("CS: 'attached'"), std::string("PS: 'attached'"),
                            std::string("[0]: 'lte'"), std::string("MCC: '310'"),
                            std::string("MNC: '4'"), std::string("Description: 'Prairie'"),
                            "3GPP cell ID: '" + lte("cell_id") + "'"}));
}

TEST_F(Interoperability, QmicliReadsTheSignal) {
  handset.modem().command("set lte.rsrp=-118 lte.snr=71");
  CommandResult result = qmicli("--nas-get-signal-info");
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_THAT(trimmed_lines(result.output),
              IsSupersetOf({"RSSI: '" + lte("rssi") + " dBm'", "RSRQ: '" + lte("rsrq") + " dB'",
                            std::string("RSRP: '-118 dBm'"), std::string("SNR: '7.1 dB'")}));
}

TEST_F(Interoperability, QmicliReadsReceiversAndTransmitter) {
  CommandResult result = qmicli("--nas-get-tx-rx-info=lte");
  EXPECT_EQ(result.status, 0) << result.errors;
  auto lines = trimmed_lines(result.output);
  EXPECT_THAT(lines, IsSupersetOf({std::string("Radio tuned: 'yes'"),
                                   "Power: '" + tenths(10 * std::stol(lte("rssi"))) + " dBm'",
                                   "RSRP: '" + tenths(10 * std::stol(lte("rsrp"))) + " dBm'",
                                   "Power: '" + tenths(std::stol(lte("tx_power"))) + " dBm'"}));
}

TEST_F(Interoperability, QmicliUnderstandsARefusal) {
  CommandResult result = qmicli("--dms-get-manufacturer");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("NotSupported"));
}

TEST_F(Interoperability, QrtrLookupListsTheServices) {
  auto services = [] {
    std::vector<std::string> found;
    auto lines = lines_of(run_command("qrtr-lookup").output);
    for (size_t i = 1; i < lines.size(); ++i) {
      std::istringstream fields(lines[i]);
      std::string service, version, instance, node;
      fields >> service >> version >> instance >> node;
      found.push_back(fmt::format("{}.{} instance {} node {}", service, version, instance, node));
    }
    return found;
  };
  EXPECT_THAT(services(),
              testing::UnorderedElementsAre("3.1 instance 1 node 1", "2.1 instance 1 node 1",
                                            "231.1 instance 1 node 1"));
  handset.modem().command("service nas down");
  EXPECT_THAT(services(),
              testing::UnorderedElementsAre("2.1 instance 1 node 1", "231.1 instance 1 node 1"));
  handset.kill_modem();
  EXPECT_THAT(services(), testing::IsEmpty());
}

// The session of "./dev run" on the handset.
TEST_F(Interoperability, QorextctlPlaysTheDemo) {
  CommandResult result = run_tool(
      "--json --modem qrtr --control " + handset.phone().control_socket() + " --phone-root " +
      handset.phone().folder() + " session </usr/share/handset/demo.session");
  EXPECT_EQ(result.status, 0) << result.errors;
  auto lines = lines_of(result.output);
  EXPECT_THAT(lines, Not(Contains(HasSubstr(R"("type":"error")"))));
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), R"({"type":"exit","status":0,"signal":null})");
}

}  // namespace
}  // namespace e2e
