// SPDX-License-Identifier: Apache-2.0
// The modem of a replay: a server of QMI packets that knows nothing by itself.
#pragma once

#include <memory>

#include "platform/linux/qmi_transport/transport.h"
#include "tools/qorextctl/base/result.h"
#include "tools/qorextctl/recording/qmi_message.h"

namespace qorextctl {

class ReplayModem {
 public:
  // Publishes the modem's services at the Unix socket.
  static Result<std::unique_ptr<ReplayModem>> serve(const std::string& path);

  // Readable when next() has something to do.
  int fd() const { return server_->fd(); }

  struct Request {
    QmiMessage message;
    uint64_t client;
  };
  // Handles one event; a request, when it was one.
  std::optional<Request> next();

  void send(uint64_t client, View packet) { server_->send(client, packet); }
  void send_to_all(const std::string& service, View packet);
  void move_service(const std::string& name, bool is_up);

 private:
  explicit ReplayModem(std::unique_ptr<qmi_transport::Server> server)
      : server_(std::move(server)), buffer_(qmi_transport::kMaxPacketSize) {}

  std::unique_ptr<qmi_transport::Server> server_;
  QmiReader reader_;
  Bytes buffer_;
};

}  // namespace qorextctl
