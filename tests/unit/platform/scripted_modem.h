// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/eventfd.h>

#include <functional>
#include <mutex>
#include <vector>

#include "platform/linux/qmi_transport/descriptors.h"
#include "tests/unit/platform/modem_place.h"

namespace test_support {

using Bytes = std::vector<uint8_t>;

struct Request {
  qmi_transport::Peer peer;
  uint32_t service;
  Bytes packet;
};

// A server on a thread of its own that does what a test tells it.
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

  // Does something on the modem's thread and waits until it is done.
  void run(std::function<void(Server&)> work);

  void publish(uint32_t service, uint32_t instance);
  void withdraw(uint32_t service);
  void answer_with(Handler handler);
  // While it is held the modem reads nothing.
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
