// SPDX-License-Identifier: Apache-2.0
// The modem's event loop: packets of clients, control lines, signals and delayed actions.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>

#include "modem/control/control.h"
#include "modem/control/control_server.h"
#include "modem/simulator/simulator.h"
#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/transport.h"

namespace modem {

class ServerLoop {
 public:
  // Publishes the services on `server`, and opens the control socket unless its path is empty. From
  // here on SIGTERM and SIGINT are blocked; they end run(). Throws std::system_error.
  ServerLoop(Simulator& simulator, std::unique_ptr<qmi_transport::Server> server,
             const std::string& control_path, bool is_verbose);

  // Returns after a signal or the command "quit".
  void run();

 private:
  void watch(int fd);
  void handle(int fd);
  void receive();
  void note_drop(const qmi_transport::ServerEvent& event);
  void perform_due();
  void perform(const Action& action);
  void publish_instances(const qmi_idl::Service& service);
  void continue_upload();
  bool can_upload() const;
  bool broadcast(uint32_t service, const Bytes& packet);
  bool send(uint32_t service, uint64_t peer, const Bytes& packet);
  void show(uint32_t service, uint64_t peer, std::span<const uint8_t> packet);
  void report_service(uint32_t service, bool is_up);
  int timeout_ms() const;
  ControlServer::Answered answer(const std::string& line);

  Simulator& simulator_;
  std::unique_ptr<qmi_transport::Server> server_;
  Control control_;
  bool is_verbose_;
  bool is_ending_ = false;
  std::set<uint32_t> up_;  // published services
  Bytes buffer_;
  qmi_transport::ScopedFd epoll_;
  qmi_transport::ScopedFd signals_;
  std::optional<ControlServer> control_server_;
};

}  // namespace modem
