// SPDX-License-Identifier: Apache-2.0
// CDMA-hook requests that the vendor service answers directly: NV items and the PFP table. Each
// request handler takes the whole request buffer, writes its own reply and returns 0.
#pragma once

#include <stdint.h>

#include "qmi_client.h"
#include "src/vendor/rde_messages.h"

// The NV handlers leave a null request without a reply.

// Reads the NV item of the table row. The reply is the one that the NV response table has for the
// request's id; an id that is not in it gets none.
int nvRead(const uint8_t* request, uint32_t rde_id);

// Writes the request's data (at most 512 bytes, else status 5) to the row's item.
int nvWrite(const uint8_t* request, uint32_t rde_id);

// Reads the item that the payload names: u32 RDE id, record, offset, length. The reply carries the
// same four and the data read.
int genNvRead(const uint8_t* request, uint32_t unused);

// Writes the item that the payload names: the same four, then the data. More than 512 bytes are
// neither sent nor replied to.
int genNvWrite(const uint8_t* request, uint32_t unused);

// Replies with the item's first `data_size` bytes, or with status 5 and zeros to an id that is not
// served. The request must not be null. Returns 0.
int handleNvResponse(const uint8_t* request, const ElementReadResponse& response,
                     uint32_t data_size);

// Compares the service programming code in the request's payload with the item and replies with
// status 0 or 5; the code itself never leaves the process. The request must not be null. Returns 0.
int handleSpcResponse(const uint8_t* request, const ElementReadResponse& response,
                      uint32_t data_size);

using NvResponseHandler = int (*)(const uint8_t* request, const ElementReadResponse& response,
                                  uint32_t data_size);

// The reply to one id of nvRead.
struct NvResponseEntry {
  uint32_t message_id;
  uint32_t data_size;  // bytes of the item that the reply is about
  NvResponseHandler handler;
  bool is_served;  // by handleNvResponse: the reply carries the item's bytes
};

// The parent expects status 5 for the items 38 and 39, although the modem is asked for them.
inline constexpr NvResponseEntry kNvResponseTable[] = {
    {0x02000007, 4, handleNvResponse,  true },
    {0x02000017, 4, handleNvResponse,  false},
    {0x02000019, 4, handleNvResponse,  false},
    {0x0200000A, 6, handleSpcResponse, false},
    {0x0200000D, 4, handleNvResponse,  true },
    {0x0200000F, 4, handleNvResponse,  true },
};

// Null when the id gets no reply.
constexpr const NvResponseEntry* find_nv_response(uint32_t message_id) {
  for (const NvResponseEntry& entry : kNvResponseTable) {
    if (entry.message_id == message_id) return &entry;
  }
  return nullptr;
}

// CDMA-hook 0x0200001C: requests the PFP table, which the modem delivers later as an indication.
// The reply's status says only whether the request was sent, not what the modem answered. The reply
// to a null request has id 0.
int myPfpRequest(const uint8_t* request, uint32_t argument);

// Vendor indication 0x0A: forwards the decoded PFP table to the parent. Runs on the client
// library's callback thread and returns 0.
int pfpIndication(qmi_client_type client, unsigned int indication_id, void* buffer,
                  unsigned int length, void* callback_data);
