// SPDX-License-Identifier: Apache-2.0
// The name service's packets. Both transports speak them in the layout of the QRTR name service
// (struct qrtr_ctrl_pkt: five little-endian 32-bit words).
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

// Nothing unless the packet has exactly the size of a control packet.
std::optional<Control> decode_control(std::span<const uint8_t> packet);

// What a watch looks for.
struct Wanted {
  uint32_t service;
  uint32_t version;
};

// Stores what the packet tells somebody who wants these servers; `nothing` when it does not concern
// them or there is no packet.
Status read_announcement(const std::optional<Control>& control, const Wanted& wanted,
                         Announcement& announcement);

constexpr uint32_t kVersionMask = 0xFF;
constexpr int kInstanceShift = 8;

constexpr uint32_t version_of(uint32_t instance) { return instance & kVersionMask; }

}  // namespace qmi_transport
