// SPDX-License-Identifier: Apache-2.0
// QRTR sockets, for both ends of the QRTR transport.
#pragma once

#include "platform/linux/qmi_transport/control.h"
#include "platform/linux/qmi_transport/descriptors.h"

namespace qmi_transport {

struct QrtrAddress {
  uint32_t node = 0;
  uint32_t port = 0;

  bool operator==(const QrtrAddress&) const = default;
};

ScopedFd qrtr_socket();

// `nothing`: the receiver's queue stayed full until the deadline.
Status qrtr_send(int socket, const QrtrAddress& to, std::span<const uint8_t> packet,
                 Deadline deadline);

// Reads one packet without waiting and stores its sender.
Received qrtr_receive(int socket, std::span<uint8_t> buffer, QrtrAddress& from);

// Decodes a packet of the name service. Returns nullopt for packets of other senders. For
// QRTR_TYPE_DEL_CLIENT, node and port are the client's address.
std::optional<Control> qrtr_control(std::span<uint8_t> packet, const QrtrAddress& from);

}  // namespace qmi_transport
