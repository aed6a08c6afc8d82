// SPDX-License-Identifier: Apache-2.0
// Clients of a running modem: of its control socket and of its services.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "modem/messages/packet.h"
#include "modem/messages/services.h"
#include "platform/linux/qmi_json/json_fields.h"
#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/transport.h"

using modem::Bytes;
using nlohmann::json;

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kTimeout{10000};
constexpr uint16_t kTransaction = 0x1234;

inline bool wait_readable(int fd) {
  pollfd wanted{fd, POLLIN, 0};
  return poll(&wanted, 1, static_cast<int>(kTimeout.count())) == 1;
}

inline Bytes request_packet(const qmi_idl::Service& service, const char* name,
                            const json& fields = {}, uint16_t transaction = kTransaction) {
  const auto* message = qmi_json::find_by_name(service, qmi_idl::Direction::request, name);
  if (message == nullptr) throw std::invalid_argument(name);
  Bytes structure(message->size);
  qmi_json::from_json(*message, fields, structure);
  return modem::encode_packet(qmi_idl::WireType::request, transaction, *message, structure);
}

// Null when the TLVs do not decode, "nothing" for bytes that are not a packet.
inline json fields_of(const qmi_idl::Service& service, const Bytes& packet) {
  auto header = qmi_idl::load_header(packet);
  if (!header) return "nothing";
  return modem::fields_of(service, *header,
                          std::span<const uint8_t>(packet).subspan(qmi_idl::kHeaderSize));
}

// A connection to the control socket; without an answer in time a line is empty.
class ControlClient {
 public:
  explicit ControlClient(const std::string& path)
      : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    is_connected_ = connect(fd_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }

  bool is_connected() const { return is_connected_; }
  int fd() const { return fd_.get(); }
  void send_text(const std::string& text) {
    ASSERT_EQ(send(fd_.get(), text.data(), text.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(text.size()));
  }
  std::string read_line() {
    while (true) {
      size_t end = input_.find('\n');
      if (end != std::string::npos) {
        std::string line = input_.substr(0, end);
        input_.erase(0, end + 1);
        return line;
      }
      char buffer[4096];
      ssize_t size = wait_readable(fd_.get()) ? read(fd_.get(), buffer, sizeof buffer) : 0;
      if (size <= 0) return "";
      input_.append(buffer, static_cast<size_t>(size));
    }
  }
  json read_json() { return json::parse(read_line(), nullptr, false); }
  json command(const char* name, json arguments = json::object()) {
    arguments["command"] = name;
    send_text(arguments.dump() + "\n");
    return read_json();
  }

 private:
  qmi_transport::ScopedFd fd_;
  bool is_connected_ = false;
  std::string input_;
};

// A client of one of the modem's services.
class ServiceClient {
 public:
  explicit ServiceClient(const qmi_transport::Endpoint& endpoint,
                         const qmi_idl::Service& service = modem::qorext_service())
      : service_(service), buffer_(qmi_transport::kMaxPacketSize) {
    watch_ = qmi_transport::watch_service(endpoint, service.id, service.version);
    auto server = watch_ ? next(qmi_transport::Announcement::Kind::appeared) : std::nullopt;
    if (server) channel_ = qmi_transport::open_channel(endpoint, *server);
  }

  bool is_open() const { return channel_ != nullptr; }

  // The server of the next announcement of this kind.
  std::optional<qmi_transport::ServerAddress> next(qmi_transport::Announcement::Kind kind) {
    qmi_transport::Announcement announcement{};
    while (wait_readable(watch_->fd())) {
      auto status = watch_->next(announcement);
      if (status == qmi_transport::Status::ok && announcement.kind == kind) {
        return announcement.server;
      }
      if (status == qmi_transport::Status::gone) break;
    }
    return std::nullopt;
  }

  json ask(const char* name, const json& fields = {}) {
    send(request_packet(service_, name, fields, ++transaction_));
    return next_fields();
  }

  void send(const Bytes& packet) { channel_->send(packet, Clock::now() + kTimeout); }

  json next_fields() { return fields_of(service_, next_packet()); }

  bool sees_the_service_go() {
    return wait_readable(channel_->fd()) &&
           channel_->receive(buffer_).status == qmi_transport::Status::gone;
  }

 private:
  Bytes next_packet() {
    while (wait_readable(channel_->fd())) {
      auto received = channel_->receive(buffer_);
      if (received.status == qmi_transport::Status::ok) {
        return {buffer_.begin(), buffer_.begin() + static_cast<ptrdiff_t>(received.size)};
      }
      if (received.status != qmi_transport::Status::nothing) break;
    }
    return {};
  }

  const qmi_idl::Service& service_;
  Bytes buffer_;
  uint16_t transaction_ = 0;
  std::unique_ptr<qmi_transport::ServiceWatch> watch_;
  std::unique_ptr<qmi_transport::Channel> channel_;
};
