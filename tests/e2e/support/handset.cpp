// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/handset.h"

#include <gtest/gtest.h>

#include <iostream>
#include <stdexcept>

namespace e2e {

namespace {

constexpr const char* kWaiting = "Child process waiting for data";
constexpr auto kPollInterval = std::chrono::milliseconds(200);

}  // namespace

Handset::Handset(Power power) {
  if (power == off) return;
  start_modem();
  start_serving();
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

void Handset::inject(const std::string& message, const std::string& fault, unsigned unaffected) {
  // A fault without effect: the modem applies faults in the order of their injection.
  if (unaffected != 0) {
    modem_->command(fmt::format("fault delay message={} times={}", message, unaffected));
  }
  modem_->command(fmt::format("fault {} message={} times=1", fault, message));
}

void Handset::start_daemon(unsigned instance) {
  qorextctl::DaemonOptions options;
  options.instance = instance;
  options.on_log = [this](const std::string& line) { log_.add(line); };
  daemon_ = e2e::start_daemon(phone_, options);
  daemon_ended_ = false;
}

Texts Handset::wait_until_serving() {
  auto texts = log_until_waiting();
  texts.emplace_back(kWaiting);
  return texts;
}

Texts Handset::start_serving(unsigned instance) {
  start_daemon(instance);
  return wait_until_serving();
}

Texts Handset::log_until_waiting() {
  Deadline deadline = time_limit();
  std::optional<size_t> waiting;
  bool running = true;
  while (!waiting && running && !deadline.passed()) {
    running = !daemon_->wait_exit(Deadline::in(std::chrono::milliseconds(0)));
    waiting = log_.wait_for(kWaiting, log_mark_, Deadline::in(kPollInterval));
  }
  if (!waiting) {
    throw std::runtime_error("the daemon does not wait for a request; its log:\n" +
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
  if (!daemon_->send(request)) throw std::runtime_error("cannot send a request to the daemon");
}

Served Handset::served() {
  Served served;
  served.log = log_until_waiting();
  // All of the request's replies are in the pipe by now.
  daemon_->replies().read_available();
  served.replies = as_hex(daemon_->replies().take_all());
  return served;
}

Texts Handset::end_of_file() {
  daemon_->close_requests();
  exit_status();
  return log_.texts(log_mark_);
}

std::string Handset::exit_status() {
  std::string status = exit_status_of(*daemon_);
  daemon_ended_ = true;
  daemon_->log().wait_end(time_limit());
  return status;
}

Texts Handset::messages_until_idle() {
  const std::string last = as_hex(generic_message(hex("00020006"), {}));
  size_t before = log_.size();
  indicate("generic");
  Texts messages;
  for (std::string one = next_message(); one != last; one = next_message()) {
    messages.push_back(one);
    if (one == "nothing") break;
  }
  log_.wait_for("Handling unsol msg 22", before);
  return messages;
}

std::string element_read(uint32_t rde_id, uint32_t record, uint32_t offset) {
  return vendor_request(
      "element_read", fmt::format(R"({{"data":"","length":0,"offset":{},"rde_id":{},"record":{}}})",
                                  offset, rde_id, record));
}

std::string element_write(uint32_t rde_id, const Bytes& data, uint32_t record, uint32_t offset) {
  return vendor_request(
      "element_write",
      fmt::format(R"({{"data":"{}","length":{},"offset":{},"rde_id":{},"record":{}}})",
                  as_hex(data), data.size(), offset, rde_id, record));
}

}  // namespace e2e
