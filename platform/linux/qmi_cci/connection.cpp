// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_cci/connection.h"

#include "platform/linux/qmi_cci/log.h"

namespace qmi_cci {
namespace {

using qmi_transport::Deadline;
using qmi_transport::Status;

bool has_passed(Deadline deadline) { return std::chrono::steady_clock::now() >= deadline; }

bool is_indication(std::span<const uint8_t> packet) {
  auto header = qmi_idl::load_header(packet);
  return header && header->type == qmi_idl::WireType::indication;
}

}  // namespace

Connection::Connection(std::unique_ptr<qmi_transport::Channel> channel, OnIndication on_indication)
    : channel_(std::move(channel)), on_indication_(std::move(on_indication)) {}

int Connection::run(Exchange& exchange, std::span<uint8_t> packet, Deadline deadline) {
  Lock lock(mutex_);
  if (death_ != QMI_NO_ERR) return death_;
  exchanges_.enter(exchange);
  bool is_reading = begin_reading();  // before there can be a response
  lock.unlock();

  qmi_idl::Header header{qmi_idl::WireType::request, exchange.transaction,
                         static_cast<uint16_t>(exchange.expected.id),
                         static_cast<uint16_t>(packet.size() - qmi_idl::kHeaderSize)};
  qmi_idl::store_header(header, packet.first<qmi_idl::kHeaderSize>());
  if (is_reading) {
    is_reading = send_reading(exchange, packet, deadline);
  } else {
    send(exchange, packet, deadline);
  }
  return await(exchange, deadline, is_reading);
}

bool Connection::begin_reading() {
  if (being_read_) return false;
  being_read_ = true;
  if (gate_) gate_->shut();
  return true;
}

// To a sender that waits, or else to the thread that reads for all.
void Connection::end_reading() {
  being_read_ = false;
  read_.notify_one();
  if (!exchanges_.wake_reader() && gate_) gate_->open();
}

void Connection::send(Exchange& exchange, std::span<const uint8_t> packet, Deadline deadline) {
  Status status = channel_->send(packet, deadline);
  if (status == Status::ok) return;
  if (status == Status::gone) return die(QMI_SERVICE_ERR);
  std::lock_guard lock(mutex_);
  if (exchange.result) return;
  exchange.result = status == Status::nothing ? QMI_TIMEOUT_ERR : QMI_TRANSPORT_ERR;
}

// A modem that takes no request may be waiting until its indications are read: others have to read
// while this sender waits. Whether it still is the one that reads.
bool Connection::send_reading(Exchange& exchange, std::span<const uint8_t> packet,
                              Deadline deadline) {
  if (channel_->send(packet, Deadline::min()) == Status::ok) return true;
  {
    std::lock_guard lock(mutex_);
    end_reading();
  }
  send(exchange, packet, deadline);
  return false;
}

int Connection::await(Exchange& exchange, Deadline deadline, bool is_reading) {
  Lock lock(mutex_);
  exchange.can_read = true;
  while (!exchange.result) {
    if (is_reading || begin_reading()) {
      is_reading = true;
      read_until_done(exchange, deadline, lock);
    } else if (has_passed(deadline)) {
      exchange.result = QMI_TIMEOUT_ERR;
    } else {
      exchange.changed.wait_until(lock, deadline);
    }
  }
  exchanges_.leave(exchange);
  if (is_reading || !being_read_) end_reading();
  return *exchange.result;
}

void Connection::read_until_done(Exchange& exchange, Deadline deadline, Lock& lock) {
  while (!exchange.result) {
    lock.unlock();
    read_until(deadline);
    lock.lock();
    if (!exchange.result && has_passed(deadline)) exchange.result = QMI_TIMEOUT_ERR;
  }
}

// While there is plenty of time one call is enough; it notices a stop a little late.
void Connection::read_until(Deadline deadline) {
  if (deadline - std::chrono::steady_clock::now() > qmi_transport::kReceiveTime) {
    take(channel_->receive_waiting(buffer_));
  } else if (stop_.wait(channel_->fd(), deadline) == Ready::readable) {
    take(channel_->receive(buffer_));
  }
}

void Connection::prepare_reading() { gate_.emplace(channel_->fd(), stop_.fd()); }

void Connection::read_for_all() {
  for (;;) {
    gate_->wait();
    Lock lock(mutex_);
    read_.wait(lock, [this] { return !being_read_; });
    if (death_ != QMI_NO_ERR) return;
    being_read_ = true;
    lock.unlock();
    take(channel_->receive(buffer_));
    lock.lock();
    end_reading();
  }
}

void Connection::take(qmi_transport::Received received) {
  if (received.status == Status::ok) return deliver(std::span(buffer_).first(received.size));
  if (received.status == Status::too_long) drop_too_long(std::span(buffer_).first(received.size));
  if (received.status == Status::gone) die(QMI_SERVICE_ERR);
  if (received.status == Status::failed) die(QMI_TRANSPORT_ERR);
}

void Connection::deliver(std::span<const uint8_t> packet) {
  if (is_indication(packet)) {
    if (on_indication_) on_indication_(packet);
    return;
  }
  std::lock_guard lock(mutex_);
  exchanges_.complete(packet);
}

// A sender whose response this was need not wait for its timeout.
void Connection::drop_too_long(std::span<const uint8_t> start) {
  LOGE("Dropped a packet of more than %zu bytes", buffer_.size());
  std::lock_guard lock(mutex_);
  exchanges_.refuse(start);
}

void Connection::die(int result) {
  std::lock_guard lock(mutex_);
  if (death_ != QMI_NO_ERR) return;
  death_ = result;
  exchanges_.fail_all(result);
}

void Connection::stop() {
  die(QMI_SERVICE_ERR);
  stop_.set();
}

}  // namespace qmi_cci
