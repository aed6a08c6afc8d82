#include "connection.h"

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
  int refused = enter(exchange);
  if (refused != QMI_NO_ERR) return refused;
  send(exchange, packet, deadline);
  return await(exchange, deadline);
}

int Connection::enter(Exchange& exchange) {
  std::lock_guard lock(mutex_);
  if (death_ == QMI_NO_ERR) exchanges_.enter(exchange);
  return death_;
}

void Connection::send(Exchange& exchange, std::span<uint8_t> packet, Deadline deadline) {
  qmi_idl::Header header{qmi_idl::WireType::request, exchange.transaction,
                         static_cast<uint16_t>(exchange.expected.id),
                         static_cast<uint16_t>(packet.size() - qmi_idl::kHeaderSize)};
  qmi_idl::store_header(header, packet.first<qmi_idl::kHeaderSize>());

  Status status = channel_->send(packet, deadline);
  if (status == Status::ok) return;
  if (status == Status::gone) return die(QMI_SERVICE_ERR);
  std::lock_guard lock(mutex_);
  if (exchange.result) return;
  exchange.result = status == Status::nothing ? QMI_TIMEOUT_ERR : QMI_TRANSPORT_ERR;
}

int Connection::await(Exchange& exchange, Deadline deadline) {
  Lock lock(mutex_);
  exchange.can_read = true;
  while (!exchange.result) {
    if (!being_read_) {
      read_until_done(exchange, deadline, lock);
    } else if (has_passed(deadline)) {
      exchange.result = QMI_TIMEOUT_ERR;
    } else {
      exchange.changed.wait_until(lock, deadline);
    }
  }
  exchanges_.leave(exchange);
  if (!being_read_) exchanges_.wake_reader();
  return *exchange.result;
}

void Connection::read_until_done(Exchange& exchange, Deadline deadline, Lock& lock) {
  being_read_ = true;
  while (!exchange.result) {
    lock.unlock();
    read_one(deadline);
    lock.lock();
    if (!exchange.result && has_passed(deadline)) exchange.result = QMI_TIMEOUT_ERR;
  }
  being_read_ = false;
}

void Connection::reserve_reading() {
  std::lock_guard lock(mutex_);
  being_read_ = true;
}

void Connection::read_for_all() {
  while (!is_dead()) read_one(Deadline::max());
}

void Connection::read_one(Deadline deadline) {
  if (stop_.wait(channel_->fd(), deadline) != Ready::readable) return;
  auto received = channel_->receive(buffer_);
  if (received.status == Status::ok) deliver(std::span(buffer_).first(received.size));
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

void Connection::die(int result) {
  std::lock_guard lock(mutex_);
  if (death_ != QMI_NO_ERR) return;
  death_ = result;
  exchanges_.fail_all(result);
}

bool Connection::is_dead() {
  std::lock_guard lock(mutex_);
  return death_ != QMI_NO_ERR;
}

void Connection::stop() {
  die(QMI_SERVICE_ERR);
  stop_.set();
}

}  // namespace qmi_cci
