// SPDX-License-Identifier: Apache-2.0
// The processes of a replay: the daemon and its phone, and a modem without behaviour of its own.
#pragma once

#include <climits>
#include <functional>
#include <memory>

#include "platform/linux/qmi_transport/transport.h"
#include "tools/qorextctl/base/fd.h"
#include "tools/qorextctl/daemon/daemon.h"
#include "tools/qorextctl/daemon/private_setup.h"
#include "tools/qorextctl/output/output.h"
#include "tools/qorextctl/recording/conversation.h"

namespace qorextctl {

// A server of QMI packets without a state of its own.
class ReplayModem {
 public:
  // Publishes the modem's services at the Unix socket.
  static Result<std::unique_ptr<ReplayModem>> serve(const std::string& path);

  // Readable when next() has an event to handle.
  int fd() const { return server_->fd(); }

  struct Request {
    QmiMessage message;
    uint64_t client;
  };
  // Handles one event. Returns the request when it was one.
  std::optional<Request> next();

  void send(uint64_t client, View packet) { server_->send(client, packet); }
  void send_to_all(const std::string& service, View packet);
  void move_service(const std::string& name, bool is_up);

 private:
  explicit ReplayModem(std::unique_ptr<qmi_transport::Server> server)
      : server_(std::move(server)), buffer_(qmi_transport::kMaxPacketSize) {}

  std::unique_ptr<qmi_transport::Server> server_;
  MessageReader reader_;
  Bytes buffer_;
};

class ReplayStage {
 public:
  // wait() calls `on_request` with every request to the modem.
  using OnRequest = std::function<void(const ReplayModem::Request&)>;
  static Result<std::unique_ptr<ReplayStage>> start(const LaunchOptions& options, Printer& printer,
                                                    OnRequest on_request);

  // Returns true when `done` does: it is called after each event and every `max_ms`. Returns false
  // after the timeout, or when the daemon has ended or the user has interrupted. Once nothing has
  // happened for the timeout, the next wait does not wait again.
  bool wait(const std::function<bool()>& done, int max_ms = INT_MAX);
  // Restarts the timeout: the daemon has something to do.
  void note_activity() { idle_ = Deadline::in_seconds(seconds_); }

  ReplayModem& modem() { return *modem_; }
  Daemon& daemon() { return *daemon_; }
  bool has_ended() const { return daemon_->replies().ended() && daemon_->unsolicited().ended(); }
  // Waits for the daemon's end and describes it.
  std::string end();
  bool is_interrupted() const { return interrupted_; }

 private:
  ReplayStage(double seconds, OnRequest on_request)
      : seconds_(seconds), on_request_(std::move(on_request)) {}
  std::optional<Error> open(const LaunchOptions& options, Printer& printer);

  double seconds_;
  OnRequest on_request_;
  Interrupts interrupts_;
  std::unique_ptr<Setup> setup_;
  std::unique_ptr<ReplayModem> modem_;
  std::unique_ptr<Daemon> daemon_;
  Deadline idle_ = Deadline::in_seconds(0);
  bool interrupted_ = false;
};

}  // namespace qorextctl
