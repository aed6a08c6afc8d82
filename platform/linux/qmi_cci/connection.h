// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <functional>
#include <memory>

#include "platform/linux/qmi_cci/exchange.h"
#include "platform/linux/qmi_cci/read_gate.h"
#include "platform/linux/qmi_cci/stop_event.h"
#include "platform/linux/qmi_transport/transport.h"

namespace qmi_cci {

// The exchanges of one client with its service. One thread at a time reads the channel for all: one
// of the senders that wait for a response, and when that sender is done, another; or, while none
// waits, a thread that does nothing else (read_for_all). A response thus wakes its sender alone.
class Connection {
 public:
  // Called by the reading thread with a whole indication, header included.
  using OnIndication = std::function<void(std::span<const uint8_t> packet)>;

  Connection(std::unique_ptr<qmi_transport::Channel> channel, OnIndication on_indication);

  // Sends a request and waits for its response. `packet` has room for a header in front of the
  // encoded request. Returns a result code.
  int run(Exchange& exchange, std::span<uint8_t> packet, qmi_transport::Deadline deadline);

  // To be called once before read_for_all(). Throws std::system_error when there is no descriptor.
  void prepare_reading();
  // Reads until the service has gone away or stop() is called.
  void read_for_all();

  // Ends all exchanges and the reading; the connection stays dead.
  void stop();

 private:
  using Lock = std::unique_lock<std::mutex>;

  // Whether the caller reads from now on. Of these two the caller holds the lock.
  bool begin_reading();
  void end_reading();

  void send(Exchange& exchange, std::span<const uint8_t> packet, qmi_transport::Deadline deadline);
  bool send_reading(Exchange& exchange, std::span<const uint8_t> packet,
                    qmi_transport::Deadline deadline);
  int await(Exchange& exchange, qmi_transport::Deadline deadline, bool is_reading);
  void read_until_done(Exchange& exchange, qmi_transport::Deadline deadline, Lock& lock);
  void read_until(qmi_transport::Deadline deadline);
  void take(qmi_transport::Received received);
  void deliver(std::span<const uint8_t> packet);
  void drop_too_long(std::span<const uint8_t> start);
  void die(int result);

  std::unique_ptr<qmi_transport::Channel> channel_;
  OnIndication on_indication_;
  StopEvent stop_;
  std::optional<ReadGate> gate_;                               // of the thread that reads for all
  std::array<uint8_t, qmi_transport::kMaxPacketSize> buffer_;  // the reading thread's

  std::mutex mutex_;
  ExchangeTable exchanges_;
  bool being_read_ = false;
  std::condition_variable read_;  // being_read_ has become false
  int death_ = QMI_NO_ERR;        // why the connection is dead; QMI_NO_ERR while it is not
};

}  // namespace qmi_cci
