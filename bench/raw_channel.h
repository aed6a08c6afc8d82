// SPDX-License-Identifier: Apache-2.0
// A service's socket without a client library: what an exchange costs at the least.
#pragma once

#include <memory>
#include <span>

#include "platform/linux/qmi_transport/transport.h"

namespace bench {

// A blocking socket to the service's first instance, at the modem named by the environment. Throws
// when there is none.
std::unique_ptr<qmi_transport::Channel> open_raw_channel(uint32_t service);

// One send and one receive of the channel's own; `response` has room for any packet.
void exchange_raw(qmi_transport::Channel& channel, std::span<const uint8_t> packet,
                  std::span<uint8_t> response);

}  // namespace bench
