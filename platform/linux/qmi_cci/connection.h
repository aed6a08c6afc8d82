// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <functional>
#include <memory>

#include "platform/linux/qmi_cci/exchange.h"
#include "platform/linux/qmi_cci/threads.h"
#include "platform/linux/qmi_transport/transport.h"

namespace qmi_cci {

// The exchanges of one client with its service. Thread-safe.
//
// One thread at a time holds the reading role and reads the channel for all: a sender that waits
// for a response, or the reader thread (run_reader) while no sender waits. A sender reads its own
// response without a switch of threads, which is why the role exists.
//
// mutex_ protects the table, the exchanges in it, the role and the failure. It is held neither
// while a system call may block nor while another lock is taken.
class Connection {
 public:
  // Called by the holder of the reading role with a whole indication, header included.
  using OnIndication = std::function<void(std::span<const uint8_t> packet)>;

  Connection(std::unique_ptr<qmi_transport::Channel> channel, OnIndication on_indication);

  // Sends a request and waits for its response. `packet` starts with room for the header, which
  // run() fills in, followed by the encoded request. Returns a result code.
  int run(Exchange& exchange, std::span<uint8_t> packet, qmi_transport::Deadline deadline);

  // Call once before any other thread uses the connection, if run_reader() is to be used. Throws
  // std::system_error when there is no descriptor.
  void prepare_reader();
  // The reader thread's main function: returns when the service has gone away or after stop().
  void run_reader();

  // Fails all exchanges and ends run_reader(). Later exchanges fail at once.
  void stop();

 private:
  using Lock = std::unique_lock<std::mutex>;

  // Take and give up the reading role. The caller holds mutex_.
  bool claim_role();
  void release_role();

  void send(Exchange& exchange, std::span<const uint8_t> packet, qmi_transport::Deadline deadline);
  bool send_with_role(Exchange& exchange, std::span<const uint8_t> packet,
                      qmi_transport::Deadline deadline);
  int await(Exchange& exchange, qmi_transport::Deadline deadline, bool has_role);
  void read_until_done(Exchange& exchange, qmi_transport::Deadline deadline, Lock& lock);

  // Only for the holder of the role, without mutex_.
  void read_once(qmi_transport::Deadline deadline);
  void handle(qmi_transport::Received received);
  void deliver(std::span<const uint8_t> packet);
  void drop_too_long(std::span<const uint8_t> start);

  void fail(int result);

  std::unique_ptr<qmi_transport::Channel>
      channel_;  // sends are thread-safe, receiving needs the role
  OnIndication on_indication_;
  StopEvent stop_;
  std::optional<ReadGate> gate_;  // of the reader thread; opened and shut with mutex_ held
  std::array<uint8_t, qmi_transport::kMaxPacketSize> buffer_;  // of the holder of the role

  std::mutex mutex_;
  ExchangeTable exchanges_;
  bool is_role_taken_ = false;
  std::condition_variable role_released_;  // the reader thread waits for it
  int failure_ = QMI_NO_ERR;               // permanent; QMI_NO_ERR while the connection works
};

}  // namespace qmi_cci
