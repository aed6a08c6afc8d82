// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/qorextctl/fake_modem.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

namespace qorextctl {

FakeModem::FakeModem(const std::string& answer)
    : path_(testing::TempDir() + "qorextctl_control_" + std::to_string(getpid())),
      listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  strncpy(address.sun_path, path_.c_str(), sizeof address.sun_path - 1);
  unlink(path_.c_str());
  EXPECT_EQ(bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(listen(listener_.get(), 1), 0);
  thread_ = std::thread([this, answer] { serve(answer); });
}

FakeModem::~FakeModem() {
  shutdown(listener_.get(), SHUT_RDWR);
  if (thread_.joinable()) thread_.join();
  unlink(path_.c_str());
}

std::string FakeModem::received() {
  thread_.join();
  return received_;
}

void FakeModem::serve(const std::string& answer) {
  UniqueFd client(accept(listener_.get(), nullptr, nullptr));
  char byte = 0;
  while (read(client.get(), &byte, 1) == 1 && byte != '\n') received_ += byte;
  [[maybe_unused]] ssize_t sent = send(client.get(), answer.data(), answer.size(), MSG_NOSIGNAL);
}

}  // namespace qorextctl
