// SPDX-License-Identifier: Apache-2.0
// CDMA-hook 0x0200001E: any utility request, straight from the parent.
#include <algorithm>

#include "src/features/feature_requests.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/utility_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr int kNotSent = -1;

// The parent judges by the data: the status is 0 even when nothing was sent.
void handleUtilsResponse(const uint8_t* request, const utils_resp_msg_v01& response,
                         uint32_t length) {
  uint32_t id = cdma_id(request);
  LOGE("handleUtilsResponse");
  LOGE("handleUtilsResponse for id %x, dataSize-%d, respSize-%d", id, length, length);

  uint32_t size = std::min(length, kUtilityDataSize);
  Frame reply = cdma_reply(id, kStatusSuccess, size);
  if (!reply) return;
  memcpy(reply.at(kCdmaPayload), response.data, size);
  writeToParent(reply);
}

}  // namespace

int handleUtilsRequest(const uint8_t* request, uint32_t) {
  utils_req_msg_v01 message;
  utils_resp_msg_v01 response = {};
  memcpy(&message, request + kCdmaPayload, sizeof message);

  int rc = kNotSent;
  if (message.length != 0) {
    LOGE("UTILS: req.req_data[0]%d, req.req_data[UTILS_REQ_DATA_SIZE_V01-1] %d", message.data[0],
         message.data[UTILS_REQ_DATA_SIZE_V01 - 1]);
    rc = qorext_exchange(kUtilityMessage, message, response);
  }
  LOGE("UTILS: Sending request result is %d", rc);
  // A failed send may leave anything in the response.
  handleUtilsResponse(request, response, rc == 0 ? response.length : 0);
  return rc;
}
