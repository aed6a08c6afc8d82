// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "src/features/feature_requests.h"
#include "src/features/status_reply.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/vendor/utility_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr uint8_t kDefaultMode = 0;
constexpr uint32_t kMaxText = UTILS_REQ_DATA_SIZE_V01 - 1;

// The text ends in a zero even if that costs its last character. That is meant.
void put_text(const uint8_t* text, uint32_t size, uint8_t* to) {
  if (size == 0) return;
  memcpy(to, text, size);
  uint8_t& last = to[size - 1];
  if (last == 0) return;
  LOGE("sig_cov warning: no NULL found at the end of string");
  last = 0;
}

int qorext_handle_sig_cov_request(uint8_t mode, const uint8_t* request) {
  uint32_t length = generic_length(request);
  LOGE("sig_cov: receive request %d len %d", mode, length);
  uint32_t size = std::min(length, kMaxText);

  utils_req_msg_v01 message = {kUtilityCoverage, 1 + size, {mode}};
  utils_resp_msg_v01 response = {};
  put_text(request + kGenericPayload, size, message.data + 1);
  int rc = qorext_exchange(kUtilityMessage, message, response);

  send_status_byte(request, status_byte(rc));
  LOGE("qorext_handle_sig_cov_request sending response, msgLen 0x%x.", 1);
  return rc;
}

}  // namespace

int handleSignalCoverage(const uint8_t* request, uint32_t) {
  return qorext_handle_sig_cov_request(kDefaultMode, request);
}

int handleSignalCoverageWithMode(const uint8_t* request, uint32_t) {
  return qorext_handle_sig_cov_request(request[kGenericPayload], request);
}
