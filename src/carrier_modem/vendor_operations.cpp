// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/operations.h"

#include <string.h>

#include <algorithm>

#include "src/host/base/log.h"
#include "src/vendor/vendor_client.h"

namespace {

// Returns the result of the send; a failure is logged under the operation's name.
int log_send_failure(const char* operation, int rc) {
  if (rc != 0) LOGE("%s: qmi_client_send_msg_sync failed (%d).", operation, rc);
  return rc;
}

template <typename... Messages>
bool exchange(const char* operation, unsigned int message_id, Messages&... messages) {
  return log_send_failure(operation, qorext_exchange(message_id, messages...)) == 0;
}

}  // namespace

int qor_qmi_sprint_fatory_reset(uint8_t mode) {
  ByteMessage request = {mode};
  ByteMessage response = {};
  // One line reports both failures, so the helper above is not used.
  int rc = qorext_exchange(kFactoryReset, request, response);
  if (rc != 0 || response.value != kOutcomeOk) {
    LOGE("qor_qmi_sprint_fatory_reset: qmi_client_send_msg_sync failed (%d), result (%d).", rc,
         response.value);
    return 0;
  }
  return 1;
}

int qor_qmi_sprint_set_roaming_list_segment(uint32_t length, const uint8_t* data) {
  LOGE("qor_qmi_sprint_set_roaming_list_segment: data_length (%d).", length);
  RoamingListRequest request = {};
  WordMessage response = {};
  request.length = std::min(length, kRoamingListSize);
  memcpy(request.data, data, request.length);

  if (!exchange("qor_qmi_sprint_set_roaming_list_segment", kSetRoamingListSegment, request,
                response))
    return 0;
  return response.value == kStatusOk;
}

int qor_qmi_sprint_get_engineering_info(int32_t type, uint8_t* output, uint32_t* length) {
  if (output == nullptr || length == nullptr) return 0;

  LOGE("In Engineering info request %d", type);
  WordMessage request = {static_cast<uint32_t>(type)};
  EngineeringInfoResponse response = {};
  if (!exchange("qor_qmi_sprint_get_engineering_info", kGetEngineeringInfo, request, response))
    return 0;
  if (response.status != kStatusOk) {
    LOGE("qor_qmi_sprint_get_engineering_info: Get Engineer info failed (%d).", response.status);
    return 0;
  }
  // The caller gets the stated length, which may exceed the text that is copied.
  LOGE("Successfully retrieved datalen %d", response.length);
  *length = response.length;
  memcpy(output, response.data, std::min(response.length, kEngineeringTextSize));
  return 1;
}

uint32_t qor_qmi_sprint_get_bsr_timer() {
  BsrTimerResponse response = {};
  if (!exchange("qor_qmi_sprint_get_bsr_timer", kGetBsrTimer, response)) return 0;
  if (response.outcome != kOutcomeOk) {
    LOGE("qor_qmi_sprint_get_bsr_timer: Get BSR timer failed (%d).", response.error);
    return 0;
  }
  return response.timer;
}

int qor_qmi_sprint_set_bsr_timer(uint32_t timer) {
  WordMessage request = {timer};
  OutcomeResponse response = {};
  if (!exchange("qor_qmi_sprint_set_bsr_timer", kSetBsrTimer, request, response)) return 0;
  if (response.outcome != kOutcomeOk) {
    LOGE("qor_qmi_sprint_set_bsr_timer: Set BSR timer failed (%d).", response.error);
    return 0;
  }
  return 1;
}

void qor_qmi_sprint_get_lte_ul_dl_channel(uint32_t* first_value, uint32_t* second_value,
                                          uint8_t* third_value, uint8_t* fourth_value) {
  LteChannelResponse response = {};
  if (!exchange("qor_qmi_sprint_get_lte_ul_dl_channel", kGetLteChannel, response)) return;
  if (response.outcome != kOutcomeOk) {
    LOGE("qor_qmi_sprint_get_lte_ul_dl_channel: failed (%d).", response.error);
    return;
  }
  if (first_value != nullptr && response.first_valid != 0) *first_value = response.first_value;
  if (second_value != nullptr && response.second_valid != 0) *second_value = response.second_value;
  if (third_value != nullptr && response.third_valid != 0) *third_value = response.third_value;
  if (fourth_value != nullptr && response.fourth_valid != 0) *fourth_value = response.fourth_value;
}

int qor_qmi_sprint_get_active_ehrpd_apn(ActiveApnResponse* response) {
  if (response == nullptr) {
    LOGE("qor_qmi_sprint_get_active_ehrpd_apn: NULL point");
    return -1;
  }
  *response = {};
  return log_send_failure("qor_qmi_sprint_get_active_ehrpd_apn",
                          qorext_exchange(kGetActiveEhrpdApn, *response));
}

TotOrderResponse qor_qmi_sprint_get_tot_order() {
  TotOrderResponse response = {};
  exchange("qor_qmi_sprint_get_tot_order", kGetTotOrder, response);
  return response;
}

int qor_qmi_sprint_update_tot_order(TotOrderRequest& order) {
  OutcomeResponse response = {};
  if (!exchange("qor_qmi_sprint_update_tot_order", kUpdateTotOrder, order, response)) return 0;
  if (response.outcome != kOutcomeOk) {
    LOGE("qor_qmi_sprint_update_tot_order: Update TOT order failed (%d).", response.error);
    return 0;
  }
  return 1;
}

uint32_t qor_qmi_sprint_read_band(uint32_t selector) {
  WordMessage request = {selector};
  ReadBandResponse response = {};
  if (!exchange("qor_qmi_sprint_read_band", kReadBand, request, response)) return 0;
  if (response.status != kStatusOk) {
    LOGE("qor_qmi_sprint_read_band: Read Band failed.");
    return 0;
  }
  return response.band;
}

int qor_qmi_sprint_write_band(uint32_t selector, uint32_t band) {
  WriteBandRequest request = {selector, band};
  WordMessage response = {};
  if (!exchange("qor_qmi_sprint_write_band", kWriteBand, request, response)) return 0;
  if (response.value != kStatusOk) {
    LOGE("qor_qmi_sprint_write_band: Read Band failed.");  // the text of the read: deliberate
    return 0;
  }
  return 1;
}

int qor_qmi_sprint_switch_proflie(uint32_t profile) {
  WordMessage request = {profile};
  WordMessage response = {};
  if (!exchange("qor_qmi_sprint_switch_proflie", kSwitchProfile, request, response)) return 0;
  if (response.value != kStatusOk) {
    LOGE("qor_qmi_sprint_switch_proflie: failed.");
    return 0;
  }
  return 1;
}

uint32_t qor_qmi_sprint_get_lte_service_state() {
  LteServiceStateResponse response = {};
  if (!exchange("qor_qmi_sprint_get_lte_service_state", kGetLteServiceState, response)) return 0;
  if (response.outcome != kOutcomeOk) {
    // Under the name of another operation: deliberate.
    LOGE("qor_qmi_sprint_get_lte_option: Get LTE service state failed (%d).", response.error);
    return 0;
  }
  return response.state;
}
