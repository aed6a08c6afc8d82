// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/soak.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "tests/e2e/support/start_daemon.h"

namespace soak {

namespace {

using e2e::as_hex;
using e2e::kPatience;
using e2e::operator+;
using qorextctl::Deadline;

constexpr uint32_t kSpoilOneIn = 8;
constexpr uint32_t kWaitForTimeoutOneIn = 200000;
constexpr size_t kMaxMessagesUnread = 300;
constexpr uint32_t kLooks = 1000;   // at the processes
constexpr uint32_t kWarmUp = 1000;  // requests before the first look counts
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

Soak::Soak(const Options& options) : options_(options), draws_(options.seed), model_(draws_) {
  e2e::become_radio_user();
  phone_.emplace();
  phone_->use_programs(installation_.programs());
  modem_ = std::make_unique<e2e::ModemProcess>(*phone_);
  qorextctl::DaemonOptions daemon;
  daemon.max_log_lines = e2e::kLastLogLines;
  daemon_ = e2e::start_daemon(*phone_, daemon);
  const Network& network = model_.network();
  requested_table_ =
      e2e::cdma_message(0x0200001D, e2e::le16(network.pfp_version) + e2e::le16(network.pfp_rat) +
                                        e2e::le32(0) + network.pfp_table);
}

void Soak::run() {
  while (served_ < options_.requests && !testing::Test::HasFailure()) {
    serve_one();
    if (served_ % std::max(1U, options_.requests / kLooks) == 0) look_at_processes();
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
  report_some();
  const Family& family = draws_.weighted(kFamilies);
  spoil_some(family);
  Case one = family.draw(draws_, model_);
  tell_spoiling();
  exchange(family, one);
  ++served_;
  ++families_[family.name];
}

void Soak::spoil_some(const Family& family) {
  bool is_slow = draws_.one_in(kWaitForTimeoutOneIn);
  bool is_spoiled = is_slow || draws_.one_in(kSpoilOneIn);
  auto count = static_cast<uint32_t>(
      std::count_if(std::begin(family.targets), std::end(family.targets),
                    [](const Target& target) { return target.message != nullptr; }));
  if (!is_spoiled || count == 0) return;

  const Target& target = family.targets[draws_.below(count)];
  const SpoilingKind& kind = draws_.one_of(is_slow ? slow_spoilings() : all_spoilings());
  auto code = [&] { return static_cast<uint16_t>(draws_.between(1, UINT16_MAX)); };
  uint16_t error = draws_.one_in(3) ? kNoRadio : code();
  model_.spoil({&kind, target.message, draws_.below(target.exchanges), code(), error});
}

void Soak::tell_spoiling() {
  auto spoiling = model_.take_met();
  if (!spoiling) return;
  for (const std::string& command : spoiling->commands()) modem_->command(command);
  ++spoilings_[spoiling->kind->fault];
}

// As many indications as the requests so far ask for.
void Soak::report_some() {
  uint64_t due = uint64_t{options_.indications} * (served_ + 1) / options_.requests;
  while (indicated_ < due) {
    Report report = draw_report(draws_, options_.indications - indicated_, parent_);
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
  owed_tables_ += model_.take_owed_tables();

  Deadline deadline = Deadline::in(kPatience);
  while (daemon_->replies().pending().size() < one.replies.size() && !deadline.passed()) {
    read_pipes(deadline);
  }
  Bytes replies = daemon_->replies().take_all();
  if (replies == one.replies) return;
  ADD_FAILURE() << described() << "\nis answered " << as_hex(replies) << "\ninstead of  "
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

// Tables that requests have asked for come when the modem pleases.
void Soak::take_message(const Bytes& message) {
  if (message == requested_table_) {
    EXPECT_GT(owed_tables_, 0U) << "a table too many";
    --owed_tables_;
    return;
  }
  if (parent_.messages.empty()) {
    ADD_FAILURE() << "not expected: " << as_hex(message);
    return;
  }
  const Bytes& expected = parent_.messages.front();
  EXPECT_TRUE(message == expected)
      << "there comes " << as_hex(message) << "\ninstead of  " << as_hex(expected);
  parent_.messages.pop_front();
}

void Soak::wait_for_messages(size_t most) {
  Deadline deadline = Deadline::in(kPatience);
  while (parent_.messages.size() + owed_tables_ > most && !testing::Test::HasFailure()) {
    read_pipes(deadline);
    if (!deadline.passed()) continue;
    ADD_FAILURE() << parent_.messages.size() << " messages and " << owed_tables_
                  << " tables do not come";
  }
}

// Indications that leave no message are over when one behind them has left its own.
void Soak::wait_until_idle() {
  modem_->command("indicate generic");
  parent_.messages.push_back(e2e::generic_message(e2e::hex("00020006"), {}));
  wait_for_messages(0);
}

void Soak::look_at_processes() {
  modem_->command("clear_requests");
  wait_until_idle();
  bool counts = served_ >= kWarmUp;
  daemon_watch_.look(daemon_->process().pid(), counts);
  modem_watch_.look(modem_->pid(), counts);
}

void Soak::check_end() {
  wait_until_idle();
  EXPECT_EQ(phone_->property("ril.baseband.rfcable.status"), parent_.cable_status);
  EXPECT_TRUE(current_log() == parent_.kpi.log()) << "the log of KPI packages differs";
  daemon_->close_requests();
  auto status = daemon_->wait_exit(Deadline::in(kPatience));
  EXPECT_EQ(status ? describe(*status) : "still running", "exit status 0");
  daemon_->replies().read_available();
  EXPECT_EQ(as_hex(daemon_->replies().take_all()), "");
}

Bytes Soak::current_log() const {
  std::error_code error;
  auto log = std::filesystem::read_symlink(phone_->folder() + "/data/vorn/.0001", error);
  if (error) return {};
  std::ifstream file(phone_->folder() + log.string(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
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
  print_counts("faults", spoilings_);
  print_counts("indications", reports_);
  daemon_watch_.print();
  modem_watch_.print();
}

}  // namespace soak
