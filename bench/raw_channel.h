// SPDX-License-Identifier: Apache-2.0
// A service's socket without a client library: the minimal cost of an exchange.
#pragma once

#include <memory>
#include <span>

#include "platform/linux/qmi_transport/transport.h"

namespace bench {

// Opens a blocking socket to the first instance of the service, at the modem that the environment
// names. Throws when there is none.
std::unique_ptr<qmi_transport::Channel> open_raw_channel(uint32_t service);

// One send and one receive; `response` must have room for any packet.
void exchange_raw(qmi_transport::Channel& channel, std::span<const uint8_t> packet,
                  std::span<uint8_t> response);

}  // namespace bench
