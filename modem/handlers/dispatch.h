// SPDX-License-Identifier: Apache-2.0
// From a request packet to its response packet.
#pragma once

#include <span>

#include "modem/messages/outbox.h"
#include "modem/messages/packet.h"
#include "modem/state/state.h"
#include "platform/linux/qmi_json/fields.h"

namespace modem {

// What handlers work on.
struct Device {
  State state;
  State factory;  // what a factory reset brings back
  Outbox outbox;
  uint64_t hob_answers = 0;  // to requests to save the hand-off block, since the start
};

// Serves one request. The response comes in zeroed and reporting success.
using Handler = void (*)(Device& device, const qmi_json::Fields& request,
                         qmi_json::Fields& response);

// The response to a whole request packet of the service. A message that no handler serves is
// answered with the result TLV and error 94, one that does not decode with error 1.
Bytes respond(Device& device, const qmi_idl::Service& service, const qmi_idl::Header& header,
              std::span<const uint8_t> tlvs);

// The response that refuses the request with these codes, in the message's own convention.
Bytes refuse(const qmi_idl::Service& service, const qmi_idl::Header& header, uint16_t result,
             uint16_t error);

}  // namespace modem
