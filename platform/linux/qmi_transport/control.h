// SPDX-License-Identifier: Apache-2.0
// The name service's packets. Both transports use the layout of the QRTR name service (struct
// qrtr_ctrl_pkt: five u32, little-endian).
#pragma once

#include <linux/qrtr.h>

#include <array>

#include "platform/linux/qmi_transport/transport.h"

namespace qmi_transport {

constexpr size_t kControlSize = sizeof(qrtr_ctrl_pkt);

struct Control {
  uint32_t type = 0;  // a qrtr_pkt_type
  ServerAddress server;
};

std::array<uint8_t, kControlSize> encode_control(const Control& control);

// Returns nullopt unless the packet has exactly kControlSize bytes.
std::optional<Control> decode_control(std::span<const uint8_t> packet);

// The servers that a watch reports.
struct ServerFilter {
  uint32_t service;
  uint32_t version;
};

// Stores the announcement in the packet. `nothing`: there is no packet, or none about these
// servers.
Status read_announcement(const std::optional<Control>& control, const ServerFilter& filter,
                         Announcement& announcement);

constexpr uint32_t kVersionMask = 0xFF;
constexpr int kInstanceShift = 8;

constexpr uint32_t version_of(uint32_t instance) { return instance & kVersionMask; }

}  // namespace qmi_transport
