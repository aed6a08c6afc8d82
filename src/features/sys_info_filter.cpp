// SPDX-License-Identifier: Apache-2.0
#include "src/features/feature_requests.h"
#include "src/features/status_reply.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/vendor/utility_messages.h"
#include "src/vendor/vendor_client.h"

int handleSysInfoFilter(const uint8_t* request, uint32_t) {
  utils_req_msg_v01 message = {kUtilitySysInfoFilter, 1, {request[kGenericPayload]}};
  utils_resp_msg_v01 response = {};
  LOGE("sys_info filter: sending qorext util request");
  int rc = qorext_exchange(kUtilityMessage, message, response);
  LOGE("sys_info filter: sending request result is %d", rc);

  uint8_t status = status_byte(rc);
  send_status_byte(request, status);
  LOGE("sys_info filter: sending response, msgLen 0x%x, resp value %d.", 1, status);
  return rc;
}
