#pragma once

#include <array>
#include <functional>
#include <memory>

#include "exchange.h"
#include "qmi_transport/transport.h"
#include "stop_event.h"

namespace qmi_cci {

// The exchanges of one client with its service. One thread at a time reads the channel for all:
// either one that does nothing else (read_for_all), or one of the senders that wait for a response;
// when that sender is done, another takes over.
class Connection {
 public:
  // Called by the reading thread with a whole indication, header included.
  using OnIndication = std::function<void(std::span<const uint8_t> packet)>;

  Connection(std::unique_ptr<qmi_transport::Channel> channel, OnIndication on_indication);

  // Sends a request and waits for its response. `packet` has room for a header in front of the
  // encoded request. Returns a result code.
  int run(Exchange& exchange, std::span<uint8_t> packet, qmi_transport::Deadline deadline);

  // From now on no sender reads: a thread is about to call read_for_all().
  void reserve_reading();
  // Reads until the service has gone away or stop() is called.
  void read_for_all();

  // Ends all exchanges and the reading; the connection stays dead.
  void stop();

 private:
  using Lock = std::unique_lock<std::mutex>;

  int enter(Exchange& exchange);
  void send(Exchange& exchange, std::span<uint8_t> packet, qmi_transport::Deadline deadline);
  int await(Exchange& exchange, qmi_transport::Deadline deadline);
  void read_until_done(Exchange& exchange, qmi_transport::Deadline deadline, Lock& lock);
  void read_one(qmi_transport::Deadline deadline);
  void deliver(std::span<const uint8_t> packet);
  void die(int result);
  bool is_dead();

  std::unique_ptr<qmi_transport::Channel> channel_;
  OnIndication on_indication_;
  StopEvent stop_;
  std::array<uint8_t, qmi_transport::kMaxPacketSize> buffer_;  // the reading thread's

  std::mutex mutex_;
  ExchangeTable exchanges_;
  bool being_read_ = false;
  int death_ = QMI_NO_ERR;  // why the connection is dead; QMI_NO_ERR while it is not
};

}  // namespace qmi_cci
