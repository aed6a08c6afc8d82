// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/qmi_transport/qrtr_socket.h"

#include <errno.h>
#include <fcntl.h>
#include <libqrtr.h>
#include <sys/socket.h>

#include <thread>

#include "platform/linux/qmi_transport/implementations.h"

namespace qmi_transport {
namespace {

// The kernel refuses a packet when the receiver's queue is full and offers no event for free room.
constexpr std::chrono::milliseconds kRetryPause{1};

bool is_queue_full(int error) { return error == EAGAIN || error == ENOSPC || error == ENOBUFS; }

}  // namespace

ScopedFd qrtr_socket() {
  ScopedFd fd(qrtr_open(0));
  if (fd) fcntl(fd.get(), F_SETFD, FD_CLOEXEC);
  return fd;
}

// Does not use qrtr_sendto(), which has no timeout and logs every full queue.
Status qrtr_send(int socket, const QrtrAddress& to, std::span<const uint8_t> packet,
                 Deadline deadline) {
  sockaddr_qrtr address{AF_QIPCRTR, to.node, to.port};
  auto* target = reinterpret_cast<const sockaddr*>(&address);
  for (;;) {
    ssize_t sent =
        sendto(socket, packet.data(), packet.size(), MSG_DONTWAIT, target, sizeof(address));
    if (sent >= 0) return Status::ok;
    if (errno == EINTR) continue;
    if (!is_queue_full(errno)) return status_of(errno);
    if (std::chrono::steady_clock::now() >= deadline) return Status::nothing;
    std::this_thread::sleep_for(kRetryPause);
  }
}

// Does not use qrtr_recvfrom(), which logs when there is no packet and truncates long ones
// silently.
Received qrtr_receive(int socket, std::span<uint8_t> buffer, QrtrAddress& from) {
  sockaddr_qrtr address{};
  iovec part{buffer.data(), buffer.size()};
  msghdr message{};
  message.msg_name = &address;
  message.msg_namelen = sizeof(address);
  message.msg_iov = &part;
  message.msg_iovlen = 1;

  ssize_t size = recvmsg(socket, &message, MSG_DONTWAIT);
  if (size < 0) return {errno == EINTR ? Status::nothing : status_of(errno)};
  from = {address.sq_node, address.sq_port};
  bool is_truncated = (message.msg_flags & MSG_TRUNC) != 0;
  return {is_truncated ? Status::too_long : Status::ok, static_cast<size_t>(size)};
}

std::optional<Control> qrtr_control(std::span<uint8_t> packet, const QrtrAddress& from) {
  if (from.port != QRTR_PORT_CTRL) return std::nullopt;
  sockaddr_qrtr sender{AF_QIPCRTR, from.node, from.port};
  qrtr_packet content{};
  if (qrtr_decode(&content, packet.data(), packet.size(), &sender) != 0) return std::nullopt;
  return Control{static_cast<uint32_t>(content.type),
                 {content.service, content.instance << kInstanceShift | content.version,
                  content.node, content.port}};
}

}  // namespace qmi_transport
