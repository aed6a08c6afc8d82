// SPDX-License-Identifier: Apache-2.0
// Replies to reads of fixed NV items: which part of the modem's answer the parent gets to see.
#pragma once

#include <stdint.h>

#include "src/vendor/rde_messages.h"

using NvResponseHandler = int (*)(const uint8_t* request, const ElementReadResponse& response,
                                  uint32_t data_size);

struct NvResponseEntry {
  uint32_t message_id;
  uint32_t data_size;  // bytes of the item that the reply is about
  NvResponseHandler handler;
};

// Null when no reply is due to this id.
const NvResponseEntry* find_nv_response(uint32_t message_id);

// Both reply builders take a request that is not null.

// Replies with the item's first `data_size` bytes, or with status 5 and zeros to an id that it does
// not serve. Returns 0.
int handleNvResponse(const uint8_t* request, const ElementReadResponse& response,
                     uint32_t data_size);

// Compares the service programming code in the request's payload with the item and replies with
// status 0 or 5; the code itself never leaves the process. Returns 0.
int handleSpcResponse(const uint8_t* request, const ElementReadResponse& response,
                      uint32_t data_size);
