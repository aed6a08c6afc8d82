// SPDX-License-Identifier: Apache-2.0
#include "src/vendor/nv_access.h"

#include <string.h>

#include "src/host/base/framing.h"
#include "src/host/base/hex.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/nv_response.h"
#include "src/vendor/rde_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

// The general requests' payload and the head of their reply's data.
constexpr size_t kItemAddress = kCdmaPayload;
constexpr size_t kItemAddressSize = 16;
constexpr size_t kItemData = kItemAddress + kItemAddressSize;
// A general read's reply data beyond the item's bytes: the address, and four zero bytes at the end.
constexpr uint32_t kGenReadOverhead = kItemAddressSize + 4;

static_assert(offsetof(ElementRequest, length) + sizeof(uint32_t) == kItemAddressSize);
static_assert(offsetof(ElementReadResponse, length) - offsetof(ElementReadResponse, rde_id) +
                  sizeof(uint32_t) ==
              kItemAddressSize);

void send_general_read_reply(uint32_t id, ElementReadResponse& response) {
  response.length = held_bytes(response);
  Frame reply = cdma_reply(id, kStatusSuccess, response.length + kGenReadOverhead);
  if (!reply) return;
  memcpy(reply.at(kItemAddress), &response.rde_id, kItemAddressSize);
  memcpy(reply.at(kItemData), response.data, response.length);
  writeToParent(reply);
}

void answer_write(const uint8_t* request, bool failed) {
  send_cdma_status(cdma_id(request), failed ? kStatusFailure : kStatusSuccess);
}

}  // namespace

int nvRead(const uint8_t* request, uint32_t rde_id) {
  if (request == nullptr) return 0;

  ElementRequest element = {};
  ElementReadResponse response = {};
  LOGE("NV Read RdeId %d", rde_id);
  element.rde_id = rde_id;
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
    answer_write(request, true);
    return 0;
  }

  ElementRequest element = {};
  ElementWriteResponse response = {};
  element.rde_id = rde_id;
  set_data(element, request + kCdmaPayload, length);

  int rc = qorext_exchange(kElementWrite, element, response);
  bool failed = rc != 0 || response.result != 0;
  if (failed) {
    LOGE("NV write Err RdeId=%d, Err=%d, resp_type=%d", rde_id, rc, response.error);
  }
  answer_write(request, failed);
  return 0;
}

int genNvRead(const uint8_t* request, uint32_t) {
  if (request == nullptr) return 0;

  ElementRequest element = {};
  ElementReadResponse response = {};
  memcpy(&element, request + kItemAddress, kItemAddressSize);

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

  ElementRequest element = {};
  ElementWriteResponse response = {};
  memcpy(&element, request + kItemAddress, kItemAddressSize);
  if (element.length > kElementDataSize) {
    LOGE("Data more than buffer size %d", element.length);
    return 0;
  }
  set_data(element, request + kItemData, element.length);
  LOGE("Gen NV Write RdeId %u, rec num %d, offset %d, len %d. hexdump...", element.rde_id,
       element.record, element.offset, element.length);
  hexDump(element.data, element.length);

  int rc = qorext_exchange(kElementWrite, element, response);
  bool failed = rc != 0 || response.result != 0;
  if (failed) {
    LOGE("Gen NV write error %d result %d, for element %u", rc, response.result, element.rde_id);
  } else {
    LOGE("Gen NV Write success for element %u", element.rde_id);
  }
  answer_write(request, failed);
  return 0;
}
