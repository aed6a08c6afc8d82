// SPDX-License-Identifier: Apache-2.0
// A modem for tests of the transports and of the client library, over each transport.
#pragma once

#include <gtest/gtest.h>
#include <sys/eventfd.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <ostream>
#include <thread>
#include <vector>

#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/transport.h"
#include "tests/unit/platform/temp_folder.h"

namespace qmi_transport {

inline void PrintTo(Endpoint::Kind kind, std::ostream* out) {
  *out << (kind == Endpoint::Kind::qrtr ? "qrtr" : "unix_socket");
}

}  // namespace qmi_transport

namespace test_support {

using TransportKind = qmi_transport::Endpoint::Kind;

// A place for a modem: an endpoint of one transport in a folder of the test. While the object
// lives, QOREXT_MODEM names the endpoint.
class ModemPlace {
 public:
  explicit ModemPlace(TransportKind kind);

  const qmi_transport::Endpoint& endpoint() const { return endpoint_; }
  std::string socket_path() const { return folder_ / "modem"; }

 private:
  TempFolder folder_;
  qmi_transport::Endpoint endpoint_;
  std::optional<ScopedEnv> modem_;
  std::optional<ScopedEnv> emulation_;
};

inline std::string kind_name(const testing::TestParamInfo<TransportKind>& info) {
  return testing::PrintToString(info.param);
}

inline auto every_transport() {
  return testing::Values(TransportKind::unix_socket, TransportKind::qrtr);
}

// Long enough for everything that works, even on a loaded machine under a sanitizer.
constexpr std::chrono::seconds kTimeout{20};

// Polls until the condition is true. False when it is not within the timeout.
template <typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds timeout = kTimeout) {
  auto deadline = std::chrono::steady_clock::now() + timeout;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// The number of this process's descriptors and threads.
struct Resources {
  size_t descriptors;
  size_t threads;
  bool operator==(const Resources&) const = default;
};
Resources own_resources();

using Bytes = std::vector<uint8_t>;

struct Request {
  qmi_transport::Peer peer;
  uint32_t service;
  Bytes packet;
};

// A server on its own thread, with a handler that the test sets.
class ScriptedModem {
 public:
  using Server = qmi_transport::Server;
  // Called on the modem's thread with every packet.
  using Handler = std::function<void(Server&, const Request&)>;

  explicit ScriptedModem(const qmi_transport::Endpoint& endpoint, Handler handler = {},
                         const qmi_transport::ServerLimits& limits = {});
  ScriptedModem(const ScriptedModem&) = delete;
  ScriptedModem& operator=(const ScriptedModem&) = delete;
  ~ScriptedModem();

  // Runs `work` on the modem's thread and waits until it has returned.
  void run(std::function<void(Server&)> work);

  void publish(uint32_t service, uint32_t instance);
  void withdraw(uint32_t service);
  void answer_with(Handler handler);
  // Runs `meanwhile` on the modem's thread, so that the modem reads nothing until it has returned.
  void hold(std::function<void()> meanwhile);

  std::vector<Request> requests() const;
  size_t request_count() const;
  size_t peers_gone() const;
  size_t peers_dropped() const;

 private:
  void serve();
  void handle_events(std::span<uint8_t> buffer);
  void do_work();

  std::unique_ptr<Server> server_;
  Handler handler_;
  qmi_transport::ScopedFd wake_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  mutable std::mutex mutex_;
  std::vector<std::function<void(Server&)>> work_;
  std::vector<Request> requests_;
  size_t peers_gone_ = 0;
  size_t peers_dropped_ = 0;
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace test_support
