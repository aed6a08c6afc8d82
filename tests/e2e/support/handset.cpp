// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/handset.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <iostream>
#include <stdexcept>

#include "tests/e2e/support/start_daemon.h"

namespace e2e {

namespace {

using qorextctl::Deadline;

constexpr const char* kWaiting = "Child process waiting for data";
constexpr auto kGlance = std::chrono::milliseconds(200);  // between looks whether it still runs

}  // namespace

Handset::Handset(Power power) {
  if (power == off) return;
  start_modem();
  start_daemon();
  wait_until_serving();
  modem_requests();
}

Handset::~Handset() {
  if (daemon_ && !daemon_ended_) {
    end_of_file();
    EXPECT_EQ(exit_status(), "exit status 0");
  }
  if (testing::Test::HasFailure()) {
    std::cerr << "the daemon's log:\n" << log_.describe();
  }
}

void Handset::kill_modem() {
  modem_->kill();
  modem_.reset();
}

void Handset::spoil(const std::string& message, const std::string& fault, unsigned spared) {
  // A delay of no time: the request is served as if there was no fault.
  if (spared != 0) modem_->command(fmt::format("fault delay message={} times={}", message, spared));
  modem_->command(fmt::format("fault {} message={} times=1", fault, message));
}

void Handset::start_daemon(unsigned instance) {
  qorextctl::DaemonOptions options;
  options.instance = instance;
  options.on_log = [this](const std::string& line) { log_.add(line); };
  daemon_ = e2e::start_daemon(phone_, options);
  daemon_ended_ = false;
}

std::vector<std::string> Handset::wait_until_serving() {
  auto texts = log_until_waiting();
  texts.emplace_back(kWaiting);
  return texts;
}

std::vector<std::string> Handset::log_until_waiting() {
  Deadline deadline = Deadline::in(kPatience);
  std::optional<size_t> waiting;
  bool running = true;
  while (!waiting && running && !deadline.passed()) {
    running = !daemon_->wait_exit(Deadline::in(std::chrono::milliseconds(0)));
    waiting = log_.wait_for(kWaiting, log_mark_, Deadline::in(kGlance));
  }
  if (!waiting) {
    throw std::runtime_error("the daemon does not come to wait for a request; its log:\n" +
                             log_.describe());
  }
  auto texts = log_.texts(log_mark_, *waiting);
  log_mark_ = *waiting + 1;
  return texts;
}

Served Handset::serve(const Bytes& request) {
  send(request);
  return served();
}

void Handset::send(const Bytes& request) {
  if (!daemon_->send(request)) throw std::runtime_error("the daemon takes no request");
}

Served Handset::served() {
  Served served;
  served.log = log_until_waiting();
  // Whatever was written for the request lies in the pipe by now.
  daemon_->replies().read_available();
  served.replies = as_hex(daemon_->replies().take_all());
  return served;
}

std::vector<std::string> Handset::end_of_file() {
  daemon_->close_requests();
  exit_status();
  return log_.texts(log_mark_);
}

std::string Handset::exit_status() {
  auto status = daemon_->wait_exit(Deadline::in(kPatience));
  daemon_ended_ = true;
  daemon_->log().wait_end(Deadline::in(kPatience));
  return status ? describe(*status) : "still running";
}

std::string element_read(uint32_t rde_id, uint32_t record, uint32_t offset) {
  return asked("qorext", "element_read",
               fmt::format(R"({{"data":"","length":0,"offset":{},"rde_id":{},"record":{}}})",
                           offset, rde_id, record));
}

std::string element_write(uint32_t rde_id, const Bytes& data, uint32_t record, uint32_t offset) {
  return asked("qorext", "element_write",
               fmt::format(R"({{"data":"{}","length":{},"offset":{},"rde_id":{},"record":{}}})",
                           as_hex(data), data.size(), offset, rde_id, record));
}

}  // namespace e2e
