// SPDX-License-Identifier: Apache-2.0
#include "src/vendor/handlers.h"

#include <string.h>

#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/rde_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

bool is_served(uint32_t id) {
  const NvResponseEntry* entry = find_nv_response(id);
  return entry != nullptr && entry->is_served;
}

// All 6 characters must be there on both sides: an item of another length matches no code.
bool codes_match(const uint8_t* request, const ElementReadResponse& response, uint32_t size) {
  return cdma_length(request) == size && response.length == size &&
         memcmp(request + kCdmaPayload, response.data, size) == 0;
}

// The general requests' payload and the head of their reply's data.
struct ItemAddress {
  uint32_t rde_id;
  uint32_t record;
  uint32_t offset;
  uint32_t length;
};
static_assert(sizeof(ItemAddress) == 16);

struct GeneralReadData {
  ItemAddress address;
  uint8_t data[kElementDataSize];
  uint8_t zeros[4];  // after the last byte of the item, wherever that is
};
static_assert(sizeof(GeneralReadData) == 532);
static_assert(offsetof(GeneralReadData, data) == 16);

constexpr size_t kItemData = kCdmaPayload + sizeof(ItemAddress);

// The message to the modem with the request's address. The length is meaningful in a write only,
// but a read sends it as well.
ElementRequest element_of(const uint8_t* request) {
  auto address = load<ItemAddress>(request + kCdmaPayload);
  return {address.rde_id, address.record, address.offset, address.length, 0, {}};
}

void send_general_read_reply(uint32_t id, const ElementReadResponse& response) {
  uint32_t length = valid_length(response);
  GeneralReadData data = {};
  data.address = {response.rde_id, response.record, response.offset, length};
  memcpy(data.data, response.data, length);
  uint32_t size = sizeof data.address + length + sizeof data.zeros;
  send_cdma_reply(id, kStatusSuccess, &data, size);
}

void send_write_status(const uint8_t* request, bool is_done) {
  send_cdma_status(cdma_id(request), status_of(is_done));
}

}  // namespace

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
  // The dump shows the complete frame, so it is built here and not by send_cdma_reply().
  LOGE("handleNvRsp: response hexdump for p_respHdr->msgId 0x%x...", id);
  hexDump(reply.data(), reply.size());
  writeToParent(reply.data(), reply.size());
  return 0;
}

int handleSpcResponse(const uint8_t* request, const ElementReadResponse& response,
                      uint32_t data_size) {
  uint32_t id = cdma_id(request);
  LOGE("handleSpcResponse for id %x, respSize-%d", id, response.length);
  send_cdma_status(id, status_of(codes_match(request, response, data_size)));
  return 0;
}

int nvRead(const uint8_t* request, uint32_t rde_id) {
  if (request == nullptr) return 0;

  ElementRequest element = {};
  ElementReadResponse response = {};
  LOGE("NV Read RdeId %d", rde_id);
  element.rde_id = rde_id;
  // The response's own result is not checked here, unlike in a general read. This is deliberate.
  if (qorext_exchange(kElementRead, element, response) != 0) {
    send_cdma_status(cdma_id(request), kStatusFailure);
    return 0;
  }

  const NvResponseEntry* entry = find_nv_response(cdma_id(request));
  if (entry != nullptr) entry->handler(request, response, entry->data_size);
  return 0;
}

int nvWrite(const uint8_t* request, uint32_t rde_id) {
  if (request == nullptr) return 0;

  uint32_t length = cdma_length(request);
  LOGE("NV write RdeId: %d length %d", rde_id, length);
  if (length > kElementDataSize) {
    send_write_status(request, false);
    return 0;
  }

  ElementRequest element = {};
  ElementWriteResponse response = {};
  element.rde_id = rde_id;
  set_data(element, request + kCdmaPayload, length);

  int rc = qorext_exchange(kElementWrite, element, response);
  bool has_failed = rc != 0 || response.result != 0;
  if (has_failed) {
    LOGE("NV write Err RdeId=%d, Err=%d, resp_type=%d", rde_id, rc, response.error);
  }
  send_write_status(request, !has_failed);
  return 0;
}

int genNvRead(const uint8_t* request, uint32_t) {
  if (request == nullptr) return 0;

  ElementRequest element = element_of(request);
  ElementReadResponse response = {};

  int rc = qorext_exchange(kElementRead, element, response);
  if (rc != 0 || response.result != 0) {
    LOGE("Gen NV Read error %d or %d", rc, response.error);
    send_cdma_status(cdma_id(request), kStatusFailure);
    return 0;
  }
  LOGE("Gen NV Read %u length %u", response.rde_id, response.length);
  send_general_read_reply(cdma_id(request), response);
  return 0;
}

int genNvWrite(const uint8_t* request, uint32_t) {
  if (request == nullptr) return 0;

  ElementRequest element = element_of(request);
  ElementWriteResponse response = {};
  if (element.length > kElementDataSize) {
    LOGE("Data more than buffer size %d", element.length);
    return 0;  // without a reply: deliberate
  }
  set_data(element, request + kItemData, element.length);
  LOGE("Gen NV Write RdeId %u, rec num %d, offset %d, len %d. hexdump...", element.rde_id,
       element.record, element.offset, element.length);
  hexDump(element.data, element.length);

  int rc = qorext_exchange(kElementWrite, element, response);
  bool has_failed = rc != 0 || response.result != 0;
  if (has_failed) {
    LOGE("Gen NV write error %d result %d, for element %u", rc, response.result, element.rde_id);
  } else {
    LOGE("Gen NV Write success for element %u", element.rde_id);
  }
  send_write_status(request, !has_failed);
  return 0;
}
