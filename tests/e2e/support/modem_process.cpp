// SPDX-License-Identifier: Apache-2.0
#include "tests/e2e/support/modem_process.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "tests/e2e/support/value_or_throw.h"
#include "tests/e2e/support/wait.h"
#include "tools/qorextctl/daemon/log_capture.h"
#include "tools/qorextctl/daemon/process.h"
#include "tools/qorextctl/modem/ask_modem.h"
#include "tools/qorextctl/modem/modem_words.h"

namespace e2e {

namespace {

using qorextctl::Json;

// The daemon connects to root's sockets after it has dropped root's privileges.
class OpenUmask {
 public:
  OpenUmask() : before_(umask(0)) {}
  OpenUmask(const OpenUmask&) = delete;
  OpenUmask& operator=(const OpenUmask&) = delete;
  ~OpenUmask() { umask(before_); }

 private:
  mode_t before_;
};

// The modem writes one byte when it accepts connections.
bool is_ready(const qorextctl::UniqueFd& ready) {
  pollfd entry{ready.get(), POLLIN, 0};
  char byte = 0;
  return poll(&entry, 1, time_limit().remaining_ms()) == 1 && read(ready.get(), &byte, 1) == 1;
}

Json parse(const std::string& words) {
  std::istringstream stream(words);
  std::vector<std::string> split;
  for (std::string word; stream >> word;) split.push_back(word);
  return value_or_throw(qorextctl::modem_command(split));
}

}  // namespace

struct ModemProcess::Parts {
  qorextctl::LogCapture output;  // ends after the process
  std::optional<qorextctl::Process> process;
  std::optional<qorextctl::ModemControl> control;

  Json call(const std::string& words) {
    Json answer = value_or_throw(qorextctl::call_to_end(*control, parse(words), kTimeout.count()));
    EXPECT_TRUE(answer.value("ok", false)) << words << ": " << answer;
    return answer;
  }
};

ModemProcess::ModemProcess(const PhoneRoot& phone) : parts_(std::make_unique<Parts>()) {
  auto ready = qorextctl::make_pipe().value();
  auto output = qorextctl::make_pipe().value();
  qorextctl::Launch launch;
  launch.arguments = {phone.program("qorext_modem"),
                      "--listen",
                      phone.modem(),
                      "--control",
                      phone.control_socket(),
                      "--ready-fd",
                      std::to_string(ready.write.get())};
  launch.descriptors = {ready.write.get()};
  launch.output = output.write.get();
  OpenUmask sockets;
  parts_->process.emplace(value_or_throw(qorextctl::Process::start(launch)));
  ready.write.reset();
  output.write.reset();
  parts_->output.start(std::move(output.read));
  if (!is_ready(ready.read)) throw std::runtime_error("the modem does not start");
  parts_->control.emplace(value_or_throw(qorextctl::ModemControl::connect(phone.control_socket())));
}

ModemProcess::~ModemProcess() {
  if (!parts_->process) return;
  parts_->process->signal(SIGTERM);
  auto status = parts_->process->wait(time_limit());
  EXPECT_EQ(status ? describe(*status) : "the modem does not end", "exit status 0");
  if (!status || (status->code == 0 && status->signal == 0)) return;
  for (const std::string& line : parts_->output.lines()) ADD_FAILURE() << line;
}

void ModemProcess::kill() {
  parts_->process->signal(SIGKILL);
  EXPECT_TRUE(parts_->process->wait(time_limit()).has_value());
  parts_->process.reset();
}

pid_t ModemProcess::pid() const { return parts_->process->pid(); }

void ModemProcess::command(const std::string& words) { parts_->call(words); }

std::string ModemProcess::value(const std::string& words, const std::string& pointer) {
  Json value = parts_->call(words).at(Json::json_pointer(pointer));
  return value.is_string() ? value.get<std::string>() : value.dump();
}

std::vector<std::string> ModemProcess::requests() {
  std::vector<std::string> requests;
  Json answer = parts_->call("requests");
  for (const Json& request : answer["requests"]) {
    nlohmann::json fields = nlohmann::json::parse(request["fields"].dump());  // sorts its members
    requests.push_back(modem_request(request["service"], request["message"], fields.dump()));
  }
  // A poll must not lose a request that arrives between the two commands.
  if (!requests.empty()) command("clear_requests");
  return requests;
}

std::string modem_request(const std::string& service, const std::string& message,
                          const std::string& fields) {
  return service + " " + message + " " + fields;
}

}  // namespace e2e
