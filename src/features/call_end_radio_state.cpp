// SPDX-License-Identifier: Apache-2.0
#include "src/features/feature_requests.h"
#include "src/features/status_reply.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/host/base/parent.h"
#include "src/vendor/utility_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr uint32_t kStateSize = 16;
constexpr uint32_t kDataSize = 1 + kStateSize;

void log_sent(uint32_t length, uint8_t last) {
  LOGE("get_call_end_radio_state : sending response, msgLen 0x%x, resp value %d.", length, last);
}

void log_state(const uint8_t* s) {
  LOGE(
      "get_call_end_radio_state : response, data: "
      "0x%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X%02X",
      s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[8], s[9], s[10], s[11], s[12], s[13], s[14],
      s[15]);
}

// The modem's first data byte gives way to the status; the state follows it.
void send_state(const uint8_t* request, const utils_resp_msg_v01& response) {
  Frame reply = generic_reply(request, kDataSize);
  if (!reply) return;
  memcpy(reply.at(kGenericPayload), response.data, kDataSize);
  *reply.at(kGenericPayload) = kStatusSuccess;
  writeToParent(reply);
  log_sent(kDataSize, *reply.at(reply.size() - 1));
  log_state(reply.at(kGenericPayload + 1));
}

}  // namespace

int handleCallEndRadioState(const uint8_t* request, uint32_t) {
  utils_req_msg_v01 message = {kUtilityCallEndRadioState, 1, {request[kGenericPayload]}};
  utils_resp_msg_v01 response = {};
  LOGE("get_call_end_radio_state : sending qorext util request");
  int rc = qorext_exchange(kUtilityMessage, message, response);
  LOGE("get_call_end_radio_state : sending request result is %d", rc);

  if (rc == 0) {
    send_state(request, response);
  } else {
    uint8_t status = status_byte(rc);
    send_status_byte(request, status);
    log_sent(1, status);
  }
  return rc;
}
