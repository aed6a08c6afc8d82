// SPDX-License-Identifier: Apache-2.0
// Features that the modem serves with its utility message (0x0F).
#include <algorithm>

#include "src/features/features.h"
#include "src/host/base/framing.h"
#include "src/host/base/log.h"
#include "src/vendor/utility_messages.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr uint8_t kDefaultCoverageMode = 0;
constexpr uint32_t kMaxCoverageText = UTILS_REQ_DATA_SIZE_V01 - 1;

// The coverage text ends in a zero even if that costs its last character. This is deliberate.
void put_coverage_text(const uint8_t* text, uint32_t size, uint8_t* to) {
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
  uint32_t size = std::min(length, kMaxCoverageText);

  utils_req_msg_v01 message = {kUtilityCoverage, 1 + size, {mode}};
  utils_resp_msg_v01 response = {};
  put_coverage_text(request + kGenericPayload, size, message.data + 1);
  int rc = qorext_exchange(kUtilityMessage, message, response);

  send_generic_status(request, status_of(rc == 0));
  LOGE("qorext_handle_sig_cov_request sending response, msgLen 0x%x.", 1);
  return rc;
}

constexpr uint32_t kRadioStateSize = 16;
constexpr uint32_t kRadioStateReplySize = 1 + kRadioStateSize;

void log_radio_state_sent(uint32_t length, uint8_t last) {
  LOGE("get_call_end_radio_state : sending response, msgLen 0x%x, resp value %d.", length, last);
}

// The status replaces the modem's first data byte; the state follows it.
void send_radio_state(const uint8_t* request, utils_resp_msg_v01& response) {
  uint8_t* data = response.data;
  data[0] = kStatusSuccess;
  if (!send_generic_reply(request, data, kRadioStateReplySize)) return;
  log_radio_state_sent(kRadioStateReplySize, data[kRadioStateReplySize - 1]);
  char state[2 * kRadioStateSize + 1];
  toHexString(kRadioStateSize, data + 1, state);
  LOGE("get_call_end_radio_state : response, data: 0x%s", state);
}

void handleSilentRebootResponse(const uint8_t* request, const utils_resp_msg_v01& response) {
  uint32_t size = std::min(response.length, kUtilityDataSize);
  LOGE("handleSilentRebootResponse >>");
  // The id in the log is the byte-swapped one that log filters match.
  LOGE("handleSilentRebootResponse for id %x, resp len %d.", load_le32(request) >> 8, size);
  LOGE("handleSilentRebootResponse resp size %d.", static_cast<int>(kGenericPayload + size));
  if (!send_generic_reply(request, response.data, size)) return;
  // The frame's last byte: without data the highest byte of the length, which is then 0.
  uint8_t last = size == 0 ? uint8_t{0} : response.data[size - 1];
  LOGE("handleSilentRebootResponse , msgLen 0x%x, resp value %d.", size, last);
}

constexpr int kNotSent = -1;

// The status is 0 even when nothing was sent: the parent checks the data only.
void handleUtilsResponse(const uint8_t* request, const utils_resp_msg_v01& response,
                         uint32_t length) {
  uint32_t id = cdma_id(request);
  LOGE("handleUtilsResponse");
  LOGE("handleUtilsResponse for id %x, dataSize-%d, respSize-%d", id, length, length);
  send_cdma_reply(id, kStatusSuccess, response.data, std::min(length, kUtilityDataSize));
}

}  // namespace

int handleSignalCoverage(const uint8_t* request, uint32_t) {
  return qorext_handle_sig_cov_request(kDefaultCoverageMode, request);
}

int handleSignalCoverageWithMode(const uint8_t* request, uint32_t) {
  return qorext_handle_sig_cov_request(request[kGenericPayload], request);
}

int handleSysInfoFilter(const uint8_t* request, uint32_t) {
  utils_req_msg_v01 message = {kUtilitySysInfoFilter, 1, {request[kGenericPayload]}};
  utils_resp_msg_v01 response = {};
  LOGE("sys_info filter: sending qorext util request");
  int rc = qorext_exchange(kUtilityMessage, message, response);
  LOGE("sys_info filter: sending request result is %d", rc);

  uint8_t status = send_generic_status(request, status_of(rc == 0));
  LOGE("sys_info filter: sending response, msgLen 0x%x, resp value %d.", 1, status);
  return rc;
}

int handleCallEndRadioState(const uint8_t* request, uint32_t) {
  utils_req_msg_v01 message = {kUtilityCallEndRadioState, 1, {request[kGenericPayload]}};
  utils_resp_msg_v01 response = {};
  LOGE("get_call_end_radio_state : sending qorext util request");
  int rc = qorext_exchange(kUtilityMessage, message, response);
  LOGE("get_call_end_radio_state : sending request result is %d", rc);

  if (rc == 0) {
    send_radio_state(request, response);
  } else {
    log_radio_state_sent(1, send_generic_status(request, kStatusFailure));
  }
  return rc;
}

int handleSilentReboot(const uint8_t* request, uint32_t) {
  utils_req_msg_v01 message = {kUtilitySilentReboot, 0, {}};
  utils_resp_msg_v01 response = {};
  LOGE("Silent reboot: Sending qorext util request");
  int rc = qorext_exchange(kUtilityMessage, message, response);
  LOGE("Silent reboot: Sending request result is %d", rc);
  if (rc != 0) {
    LOGE(" Silent reboot send msg error, send back generic failure.");
    response.length = 1;  // the status replaces the data
    response.data[0] = kStatusFailure;
  }
  handleSilentRebootResponse(request, response);
  return rc;
}

int handleUtilsRequest(const uint8_t* request, uint32_t) {
  auto message = load<utils_req_msg_v01>(request + kCdmaPayload);
  utils_resp_msg_v01 response = {};

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
