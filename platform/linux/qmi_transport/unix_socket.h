// SPDX-License-Identifier: Apache-2.0
// SEQPACKET sockets, for both ends of the Unix transport.
//
// The first packet of a connection is a control packet that decides its role:
// - QRTR_TYPE_NEW_LOOKUP: a lookup. The server sends QRTR_TYPE_NEW_SERVER for every instance
//   present, an all-zero one as the end of the list, and then QRTR_TYPE_NEW_SERVER or
//   QRTR_TYPE_DEL_SERVER whenever an instance comes up or goes away.
// - QRTR_TYPE_HELLO with a server's node and port: a client of that server. The server returns the
//   same packet, or closes the connection when there is no such server. Every later packet is a QMI
//   message.
#pragma once

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "platform/linux/qmi_transport/descriptors.h"
#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {

// Returns nullopt when the path is empty or too long for a socket address (errno is set).
std::optional<sockaddr_un> unix_address(const std::string& path);

// A non-blocking SEQPACKET socket, not connected.
ScopedFd unix_socket();

// Empty on failure (errno is set).
ScopedFd unix_connect(const std::string& path);

// `nothing`: the other end's queue stayed full until the deadline.
Status unix_send(int socket, std::span<const uint8_t> packet, Deadline deadline);

// `flags`: MSG_DONTWAIT, or 0 to wait for the socket's receive timeout.
Received unix_receive(int socket, std::span<uint8_t> buffer, int flags = MSG_DONTWAIT);

// A non-blocking SEQPACKET socket that listens on the path. Replaces the socket file of a server
// that has ended; any other file is left alone. Empty on failure (errno is set).
ScopedFd unix_listen(const std::string& path);

// The file of a listening socket. Removes it at the end unless another file has replaced it.
class SocketFile {
 public:
  explicit SocketFile(const std::string& path) : path_(path) { lstat(path_.c_str(), &identity_); }
  SocketFile(const SocketFile&) = delete;
  SocketFile& operator=(const SocketFile&) = delete;
  ~SocketFile();

 private:
  std::string path_;
  struct stat identity_ {};
};

}  // namespace qmi_transport
