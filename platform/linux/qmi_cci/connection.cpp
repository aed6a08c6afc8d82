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

// Claims the role before sending: the gate is then shut when the response comes, and the response
// does not wake the reader thread as well.
int Connection::run(Exchange& exchange, std::span<uint8_t> packet, Deadline deadline) {
  Lock lock(mutex_);
  if (failure_ != QMI_NO_ERR) return failure_;
  exchanges_.add(exchange);
  bool has_role = claim_role();
  lock.unlock();

  qmi_idl::Header header{qmi_idl::WireType::request, exchange.transaction,
                         static_cast<uint16_t>(exchange.expected.id),
                         static_cast<uint16_t>(packet.size() - qmi_idl::kHeaderSize)};
  qmi_idl::store_header(header, packet.first<qmi_idl::kHeaderSize>());
  if (has_role) {
    has_role = send_with_role(exchange, packet, deadline);
  } else {
    send(exchange, packet, deadline);
  }
  return await(exchange, deadline, has_role);
}

bool Connection::claim_role() {
  if (is_role_taken_) return false;
  is_role_taken_ = true;
  if (gate_) gate_->shut();
  return true;
}

// Passes the role to a waiting sender, or opens the gate for the reader thread when there is none.
// The reader is also notified, because it may have passed the gate before it was shut. It then
// competes with the sender for the role; the loser waits for the next release.
void Connection::release_role() {
  is_role_taken_ = false;
  role_released_.notify_one();
  if (!exchanges_.wake_sender() && gate_) gate_->open();
}

void Connection::send(Exchange& exchange, std::span<const uint8_t> packet, Deadline deadline) {
  Status status = channel_->send(packet, deadline);
  if (status == Status::ok) return;
  if (status == Status::gone) return fail(QMI_SERVICE_ERR);
  std::lock_guard lock(mutex_);
  if (exchange.result) return;  // completed meanwhile, for example by fail()
  exchange.result = status == Status::nothing ? QMI_TIMEOUT_ERR : QMI_TRANSPORT_ERR;
}

// Gives up the role when the send would have to wait: a modem that takes no requests may itself be
// waiting until its indications are read. Returns whether the sender still has the role.
bool Connection::send_with_role(Exchange& exchange, std::span<const uint8_t> packet,
                                Deadline deadline) {
  if (channel_->send(packet, Deadline::min()) == Status::ok) return true;
  {
    std::lock_guard lock(mutex_);
    release_role();
  }
  send(exchange, packet, deadline);
  return false;
}

// No wakeup is lost:
// - `result` is set and `changed` is notified under mutex_, which this thread holds whenever it is
//   not waiting.
// - A sender that was woken for the role claims it even when its deadline has passed, and releases
//   it afterwards, which wakes the next one.
// - A sender whose response came after it was woken for the role leaves the loop without claiming
//   it. It releases the role all the same when nobody has taken it, to pass the wakeup on.
int Connection::await(Exchange& exchange, Deadline deadline, bool has_role) {
  Lock lock(mutex_);
  exchange.can_read = true;
  while (!exchange.result) {
    if (has_role || claim_role()) {
      has_role = true;
      read_until_done(exchange, deadline, lock);
    } else if (has_passed(deadline)) {
      exchange.result = QMI_TIMEOUT_ERR;
    } else {
      exchange.changed.wait_until(lock, deadline);
    }
  }
  exchanges_.remove(exchange);
  if (has_role || !is_role_taken_) release_role();
  return *exchange.result;
}

// Also delivers the responses of other senders, each of which is woken by its own `changed`.
void Connection::read_until_done(Exchange& exchange, Deadline deadline, Lock& lock) {
  while (!exchange.result) {
    lock.unlock();
    read_once(deadline);
    lock.lock();
    if (!exchange.result && has_passed(deadline)) exchange.result = QMI_TIMEOUT_ERR;
  }
}

// One system call is enough while the deadline is far away. receive_waiting() does not watch stop_,
// so stop() is noticed up to kReceiveTime late.
void Connection::read_once(Deadline deadline) {
  if (deadline - std::chrono::steady_clock::now() > qmi_transport::kReceiveTime) {
    handle(channel_->receive_waiting(buffer_));
  } else if (stop_.wait(channel_->fd(), deadline) == Ready::readable) {
    handle(channel_->receive(buffer_));
  }
}

void Connection::prepare_reader() { gate_.emplace(channel_->fd(), stop_.fd()); }

// The gate may let the thread pass just before a sender claims the role, and that sender may read
// the packet. Receiving does not wait, so the thread then finds nothing and returns to the gate.
void Connection::run_reader() {
  for (;;) {
    gate_->wait();
    Lock lock(mutex_);
    role_released_.wait(lock, [this] { return !is_role_taken_; });
    if (failure_ != QMI_NO_ERR) return;
    is_role_taken_ = true;  // not claim_role(): the gate may stay open for its own thread
    lock.unlock();
    handle(channel_->receive(buffer_));
    lock.lock();
    release_role();
  }
}

void Connection::handle(qmi_transport::Received received) {
  if (received.status == Status::ok) return deliver(std::span(buffer_).first(received.size));
  if (received.status == Status::too_long) drop_too_long(std::span(buffer_).first(received.size));
  if (received.status == Status::gone) fail(QMI_SERVICE_ERR);
  if (received.status == Status::failed) fail(QMI_TRANSPORT_ERR);
}

// The role alone keeps the indications in order. mutex_ is not held, so the handler may take locks
// of its own.
void Connection::deliver(std::span<const uint8_t> packet) {
  if (is_indication(packet)) {
    if (on_indication_) on_indication_(packet);
    return;
  }
  std::lock_guard lock(mutex_);
  exchanges_.complete(packet);
}

// If the packet is a response, its sender does not have to wait for the timeout.
void Connection::drop_too_long(std::span<const uint8_t> start) {
  LOGE("Dropped a packet of more than %zu bytes", buffer_.size());
  std::lock_guard lock(mutex_);
  exchanges_.complete_as_malformed(start);
}

// The first failure is kept; a later one, or stop(), does not replace it.
void Connection::fail(int result) {
  std::lock_guard lock(mutex_);
  if (failure_ != QMI_NO_ERR) return;
  failure_ = result;
  exchanges_.fail_all(result);
}

// In this order: run_reader() checks the failure after its wait has ended.
void Connection::stop() {
  fail(QMI_SERVICE_ERR);
  stop_.set();
}

}  // namespace qmi_cci
