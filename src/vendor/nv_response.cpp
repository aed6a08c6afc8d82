// SPDX-License-Identifier: Apache-2.0
#include "src/vendor/nv_response.h"

#include <string.h>

#include "src/host/base/framing.h"
#include "src/host/base/hex.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"

namespace {

constexpr NvResponseEntry kNvResponseTable[] = {
  // id, bytes of the item, reply
    {0x02000007, 4, handleNvResponse },
    {0x02000017, 4, handleNvResponse },
    {0x02000019, 4, handleNvResponse },
    {0x0200000A, 6, handleSpcResponse},
    {0x0200000D, 4, handleNvResponse },
    {0x0200000F, 4, handleNvResponse },
};

// The rows of items 38 and 39 lead here as well; the parent expects status 5 for them.
bool is_served(uint32_t id) { return id == 0x02000007 || id == 0x0200000D || id == 0x0200000F; }

bool codes_match(const uint8_t* request, const ElementReadResponse& response, uint32_t size) {
  return cdma_length(request) == size && response.length == size &&
         memcmp(request + kCdmaPayload, response.data, size) == 0;
}

}  // namespace

const NvResponseEntry* find_nv_response(uint32_t message_id) {
  for (const NvResponseEntry& entry : kNvResponseTable) {
    if (entry.message_id == message_id) return &entry;
  }
  return nullptr;
}

int handleNvResponse(const uint8_t* request, const ElementReadResponse& response,
                     uint32_t data_size) {
  uint32_t id = cdma_id(request);
  LOGE("handleNvResponse for id %x, dataSize-%d, respSize-%d", id, data_size, response.length);

  Frame reply = cdma_reply(id, kStatusSuccess, data_size);
  if (!reply) return 0;
  if (is_served(id)) {
    memcpy(reply.at(kCdmaPayload), response.data, data_size);
    LOGE("handleNvRsp: data is %d for msgId 0x%x", response.data[0], id);
  } else {
    LOGE("This should not happen");
    store_le32(reply.at(kCdmaStatus), kStatusFailure);
  }
  LOGE("handleNvRsp: response hexdump for p_respHdr->msgId 0x%x...", id);
  hexDump(reply.data(), reply.size());
  writeToParent(reply);
  return 0;
}

int handleSpcResponse(const uint8_t* request, const ElementReadResponse& response,
                      uint32_t data_size) {
  uint32_t id = cdma_id(request);
  LOGE("handleSpcResponse for id %x, respSize-%d", id, response.length);
  send_cdma_status(id, codes_match(request, response, data_size) ? kStatusSuccess : kStatusFailure);
  return 0;
}
