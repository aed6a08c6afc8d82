// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/soak.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "tests/e2e/support/command.h"
#include "tests/e2e/support/daemon.h"

namespace soak {

namespace {

using e2e::as_hex;
using e2e::operator+;
using qorextctl::Deadline;

constexpr uint32_t kFaultOneIn = 8;
constexpr uint32_t kTimeoutOneIn = 200000;
constexpr size_t kMaxMessagesUnread = 300;
constexpr uint32_t kSamples = 1000;  // of the processes
constexpr uint32_t kWarmUp = 1000;   // requests before the first checked sample
constexpr auto kProgressEvery = std::chrono::seconds(1);

std::vector<Family> all_families() {
  std::vector<Family> all;
  for (auto rows : {nv_families(), nam_families(), setting_families(), network_families(),
                    feature_families(), foreign_families()}) {
    all.insert(all.end(), rows.begin(), rows.end());
  }
  return all;
}

void print_counts(const char* title, const std::map<std::string, uint32_t>& counts) {
  std::cout << title << ":";
  for (const auto& [name, count] : counts) std::cout << "  " << name << " " << count;
  std::cout << "\n";
}

}  // namespace

Soak::Soak(const Options& options) : options_(options), random_(options.seed), model_(random_) {
  e2e::become_radio_user();
  phone_.emplace();
  phone_->use_programs(installation_.programs());
  modem_ = std::make_unique<e2e::ModemProcess>(*phone_);
  qorextctl::DaemonOptions daemon;
  daemon.max_log_lines = e2e::kLastLogLines;
  daemon_ = e2e::start_daemon(*phone_, daemon);
  const Network& network = model_.network();
  requested_table_ = e2e::cdma_message(0x0200001D, e2e::le16(network.pfp_first_value) +
                                                       e2e::le16(network.pfp_rat) + e2e::le32(0) +
                                                       network.pfp_bytes);
}

void Soak::run() {
  while (served_ < options_.requests && !testing::Test::HasFailure()) {
    serve_one();
    if (served_ % std::max(1U, options_.requests / kSamples) == 0) sample_processes();
    show_progress();
  }
  if (!testing::Test::HasFailure()) check_end();
  if (!testing::Test::HasFailure()) return;
  for (const std::string& line : daemon_->log().lines()) std::cerr << line << "\n";
}

void Soak::serve_one() {
  static const std::vector<Family> kFamilies = all_families();
  if (model_.take_was_reset()) {
    modem_->command(nlohmann::json{{"command", "set"}, {"state", model_.state()}}.dump());
  }
  indicate_some();
  const Family& family = random_.weighted(kFamilies);
  inject_some(family);
  Case one = family.make_case(random_, model_);
  send_faults();
  exchange(family, one);
  ++served_;
  ++families_[family.name];
}

void Soak::inject_some(const Family& family) {
  bool is_slow = random_.one_in(kTimeoutOneIn);
  bool has_fault = is_slow || random_.one_in(kFaultOneIn);
  auto count = static_cast<uint32_t>(
      std::count_if(std::begin(family.targets), std::end(family.targets),
                    [](const Target& target) { return target.message != nullptr; }));
  if (!has_fault || count == 0) return;

  const Target& target = family.targets[random_.below(count)];
  const FaultKind& kind = random_.one_of(is_slow ? slow_faults() : all_faults());
  auto code = [&] { return static_cast<uint16_t>(random_.between(1, UINT16_MAX)); };
  uint16_t error = random_.one_in(3) ? kNoRadio : code();
  model_.inject({&kind, target.message, random_.below(target.exchanges), code(), error});
}

void Soak::send_faults() {
  auto fault = model_.take_met();
  if (!fault) return;
  for (const std::string& command : fault->commands()) modem_->command(command);
  ++faults_[fault->kind->name];
}

// Keeps the number of indications proportional to the number of requests.
void Soak::indicate_some() {
  uint64_t due = uint64_t{options_.indications} * (served_ + 1) / options_.requests;
  while (indicated_ < due) {
    Report report = random_report(random_, options_.indications - indicated_, parent_);
    modem_->command(report.command);
    indicated_ += report.count;
    reports_[report.kind] += report.count;
    wait_for_messages(kMaxMessagesUnread);
  }
}

void Soak::exchange(const Family& family, const Case& one) {
  auto described = [&] {
    return fmt::format("{}, request {} of seed {}: {}", family.name, served_, options_.seed,
                       as_hex(one.request));
  };
  ASSERT_TRUE(daemon_->send(one.request)) << described();
  expected_tables_ += model_.take_expected_tables();

  Deadline deadline = e2e::time_limit();
  while (daemon_->replies().pending().size() < one.replies.size() && !deadline.passed()) {
    read_pipes(deadline);
  }
  Bytes replies = daemon_->replies().take_all();
  if (replies == one.replies) return;
  ADD_FAILURE() << described() << "\nreply    " << as_hex(replies) << "\nexpected "
                << as_hex(one.replies);
}

void Soak::read_pipes(Deadline deadline) {
  pollfd entries[] = {{daemon_->replies().fd(), POLLIN, 0},
                      {daemon_->unsolicited().fd(), POLLIN, 0}};
  poll(entries, std::size(entries), deadline.remaining_ms());
  daemon_->replies().read_available();
  daemon_->unsolicited().read_available();
  bool has_ended = daemon_->replies().ended() || daemon_->unsolicited().ended();
  if (has_ended) throw std::runtime_error("the daemon has ended");
  check_messages();
}

void Soak::check_messages() {
  while (auto message = daemon_->unsolicited().take(qorextctl::unsolicited_size)) {
    take_message(*message);
  }
}

// Requested tables can arrive at any time.
void Soak::take_message(const Bytes& message) {
  if (message == requested_table_) {
    EXPECT_GT(expected_tables_, 0U) << "unexpected table";
    --expected_tables_;
    return;
  }
  if (parent_.messages.empty()) {
    ADD_FAILURE() << "unexpected message: " << as_hex(message);
    return;
  }
  const Bytes& expected = parent_.messages.front();
  EXPECT_TRUE(message == expected)
      << "message  " << as_hex(message) << "\nexpected " << as_hex(expected);
  parent_.messages.pop_front();
}

void Soak::wait_for_messages(size_t max_outstanding) {
  Deadline deadline = e2e::time_limit();
  while (parent_.messages.size() + expected_tables_ > max_outstanding &&
         !testing::Test::HasFailure()) {
    read_pipes(deadline);
    if (!deadline.passed()) continue;
    ADD_FAILURE() << parent_.messages.size() << " messages and " << expected_tables_
                  << " tables are missing";
  }
}

// The message of a last indication shows that all indications before it have been processed.
void Soak::wait_until_idle() {
  modem_->command("indicate generic");
  parent_.messages.push_back(e2e::generic_message(e2e::hex("00020006"), {}));
  wait_for_messages(0);
}

void Soak::sample_processes() {
  modem_->command("clear_requests");
  wait_until_idle();
  bool is_warm = served_ >= kWarmUp;
  daemon_watch_.sample(daemon_->process().pid(), is_warm);
  modem_watch_.sample(modem_->pid(), is_warm);
}

void Soak::check_end() {
  wait_until_idle();
  EXPECT_EQ(phone_->property("ril.baseband.rfcable.status"), parent_.cable_status);
  EXPECT_TRUE(current_log() == parent_.kpi.log()) << "the KPI log differs";
  daemon_->close_requests();
  EXPECT_EQ(e2e::exit_status_of(*daemon_), "exit status 0");
  daemon_->replies().read_available();
  EXPECT_EQ(as_hex(daemon_->replies().take_all()), "");
}

Bytes Soak::current_log() const {
  std::error_code error;
  auto log = std::filesystem::read_symlink(phone_->folder() + "/data/vorn/.0001", error);
  if (error) return {};
  return e2e::characters(e2e::content_of(phone_->folder() + log.string()));
}

void Soak::show_progress() {
  if (isatty(STDERR_FILENO) == 0 || Clock::now() - last_shown_ < kProgressEvery) return;
  last_shown_ = Clock::now();
  std::cerr << fmt::format("\r{} of {} requests, {} of {} indications ", served_, options_.requests,
                           indicated_, options_.indications)
            << std::flush;
}

void Soak::report() const {
  std::chrono::duration<double> taken = Clock::now() - start_;
  std::cout << fmt::format("{} requests and {} indications in {:.1f} s: {:.0f} requests/s\n",
                           served_, indicated_, taken.count(), served_ / taken.count());
  print_counts("requests", families_);
  print_counts("faults", faults_);
  print_counts("indications", reports_);
  daemon_watch_.print();
  modem_watch_.print();
}

}  // namespace soak
