// SPDX-License-Identifier: Apache-2.0
#include "src/carrier/carrier_reply.h"

#include "src/host/base/log.h"
#include "src/host/base/parent.h"

uint32_t qorext_hook_sprint_send_response(const uint8_t* header, const uint8_t* data) {
  if (header == nullptr) return 0;
  uint32_t id = cdma_id(header);
  auto length = static_cast<int32_t>(cdma_length(header));

  LOGE("qorext_hook_sprint_send_response: ENTER FUNCTION %d ", id);
  Frame frame(cdma_length(header) + kCdmaReplySize);
  if (!frame) return 0;
  LOGE("qorext_hook_sprint_send_response: SEND RESPONSE TO APP LAYER Message ID %d ", id);
  LOGE("qorext_hook_sprint_send_response: SEND RESPONSE TO APP LAYER Length %d ", length);

  memcpy(frame.at(0), header, kCdmaReplySize);
  if (data != nullptr && length >= 1) {
    memset(frame.at(kCdmaPayload), 0, frame.size() - kCdmaPayload);
    memcpy(frame.at(kCdmaPayload), data, static_cast<size_t>(length));
    LOGE("qorext_hook_sprint_send_response: BYTE ARRAY NOT NULL ");
  }
  LOGE("qorext_hook_sprint_send_response: HEADER ID %d ", id);
  writeToParent(frame);
  return 1;
}
