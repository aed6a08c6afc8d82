// SPDX-License-Identifier: Apache-2.0
// From a request packet to its response packet.
#pragma once

#include <span>

#include "modem/messages/outbox.h"
#include "modem/messages/packet.h"
#include "modem/state/state.h"
#include "platform/linux/qmi_json/fields.h"

namespace modem {

// The modem as the handlers see it.
struct Device {
  State state;
  State factory;  // restored by a factory reset
  Outbox outbox;
  uint64_t hob_answers = 0;  // to hand-off block saves, since the start
};

// Serves one request. The response is zero apart from the report of success.
using Handler = void (*)(Device& device, const qmi_json::Fields& request,
                         qmi_json::Fields& response);

// The response packet to a request of the service. A message without a handler is answered with the
// result TLV and error 94, one that cannot be decoded with error 1.
Bytes respond(Device& device, const qmi_idl::Service& service, const qmi_idl::Header& header,
              std::span<const uint8_t> tlvs);

// The response packet that refuses the request, in the form that the message uses.
Bytes refuse(const qmi_idl::Service& service, const qmi_idl::Header& header, uint16_t result,
             uint16_t error);

}  // namespace modem
