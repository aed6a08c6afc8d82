// SPDX-License-Identifier: Apache-2.0
// The executable, started in a folder of its own.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/modem/modem_clients.h"

class ModemProcess : public ::testing::Test {
 protected:
  void SetUp() override {
    char folder[] = "/tmp/modem_process_XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    folder_ = folder;
    endpoint = {qmi_transport::Endpoint::Kind::unix_socket, folder_ + "/modem"};
    control_path = folder_ + "/control";
  }
  void TearDown() override {
    if (pid_ > 0) kill(pid_, SIGKILL);
    if (pid_ > 0) waitpid(pid_, nullptr, 0);
    std::filesystem::remove_all(folder_);
  }

  std::string file(const std::string& name) const { return folder_ + "/" + name; }

  void launch(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), QOREXT_MODEM_PATH);
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    std::string errors = file("errors");
    pid_ = fork();
    if (pid_ != 0) return;
    int fd = open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(fd, STDERR_FILENO);
    dup2(fd, STDOUT_FILENO);
    execv(argv[0], argv.data());
    _exit(127);
  }

  // With both sockets. Returns when the modem has reported that it is ready.
  void start(const std::vector<std::string>& more = {}) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    qmi_transport::ScopedFd read_end(ends[0]);
    qmi_transport::ScopedFd write_end(ends[1]);
    std::vector<std::string> arguments = {"--listen",   "unix:" + endpoint.path,
                                          "--control",  control_path,
                                          "--ready-fd", std::to_string(ends[1])};
    arguments.insert(arguments.end(), more.begin(), more.end());
    launch(arguments);
    write_end = qmi_transport::ScopedFd();
    ASSERT_TRUE(wait_readable(read_end.get()));
    char byte[2];
    ASSERT_EQ(read(read_end.get(), byte, sizeof byte), 1) << text_of("errors");
    ASSERT_TRUE(wait_readable(read_end.get()));
    ASSERT_EQ(read(read_end.get(), byte, sizeof byte), 0);
  }

  // With a client of the vendor's service.
  ServiceClient start_with_client(const std::vector<std::string>& more = {}) {
    start(more);
    return ServiceClient(endpoint);
  }

  // The exit status, or -1 if the process does not exit.
  int wait_for_end() {
    auto deadline = Clock::now() + kTimeout;
    int status = 0;
    while (waitpid(pid_, &status, WNOHANG) == 0) {
      if (Clock::now() > deadline) return -1;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string text_of(const std::string& name) const {
    std::ifstream stream(file(name));
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  // On a control connection that stays open.
  json command(const char* name, const json& arguments = json::object()) {
    if (!control_) control_.emplace(control_path);
    return control_->command(name, arguments);
  }

  bool exists(const std::string& path) const { return std::filesystem::exists(path); }

  qmi_transport::Endpoint endpoint{};
  std::string control_path;
  pid_t pid_ = -1;

 private:
  std::string folder_;
  std::optional<ControlClient> control_;
};
