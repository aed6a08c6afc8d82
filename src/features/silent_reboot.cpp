// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "src/features/feature_requests.h"
#include "src/features/status_reply.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/utility_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

void handleSilentRebootResponse(const uint8_t* request, const utils_resp_msg_v01& response) {
  uint32_t size = std::min(response.length, kUtilityDataSize);
  LOGE("handleSilentRebootResponse >>");
  LOGE("handleSilentRebootResponse for id %x, resp len %d.", load_le32(request) >> 8, size);
  LOGE("handleSilentRebootResponse resp size %d.", static_cast<int>(kGenericPayload + size));

  Frame reply = generic_reply(request, size);
  if (!reply) return;
  memcpy(reply.at(kGenericPayload), response.data, size);
  writeToParent(reply);
  LOGE("handleSilentRebootResponse , msgLen 0x%x, resp value %d.", size,
       *reply.at(reply.size() - 1));
}

}  // namespace

int handleSilentReboot(const uint8_t* request, uint32_t) {
  utils_req_msg_v01 message = {kUtilitySilentReboot, 0, {}};
  utils_resp_msg_v01 response = {};
  LOGE("Silent reboot: Sending qorext util request");
  int rc = qorext_exchange(kUtilityMessage, message, response);
  LOGE("Silent reboot: Sending request result is %d", rc);
  if (rc != 0) {
    LOGE(" Silent reboot send msg error, send back generic failure.");
    response.length = 1;
    response.data[0] = status_byte(rc);
  }
  handleSilentRebootResponse(request, response);
  return rc;
}
