// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/vendor_operations.h"

#include <string.h>

#include <algorithm>

#include "src/host/base/log.h"
#include "src/vendor/vendor_client.h"

int qor_qmi_sprint_fatory_reset(uint8_t mode) {
  ByteMessage request = {mode};
  ByteMessage response = {};
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

  int rc = qorext_exchange(kSetRoamingListSegment, request, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_set_roaming_list_segment: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  return response.value == kStatusOk;
}

int qor_qmi_sprint_get_engineering_info(int32_t type, uint8_t* output, uint32_t* length) {
  if (output == nullptr || length == nullptr) return 0;

  LOGE("In Engineering info request %d", type);
  WordMessage request = {static_cast<uint32_t>(type)};
  EngineeringInfoResponse response = {};
  int rc = qorext_exchange(kGetEngineeringInfo, request, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_get_engineering_info: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  if (response.status != kStatusOk) {
    LOGE("qor_qmi_sprint_get_engineering_info: Get Engineer info failed (%d).", response.status);
    return 0;
  }
  LOGE("Successfully retrieved datalen %d", response.length);
  *length = response.length;
  memcpy(output, response.data, std::min(response.length, kEngineeringTextSize));
  return 1;
}

uint32_t qor_qmi_sprint_get_bsr_timer() {
  BsrTimerResponse response = {};
  int rc = qorext_exchange(kGetBsrTimer, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_get_bsr_timer: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  if (response.outcome != kOutcomeOk) {
    LOGE("qor_qmi_sprint_get_bsr_timer: Get BSR timer failed (%d).", response.error);
    return 0;
  }
  return response.timer;
}

int qor_qmi_sprint_set_bsr_timer(uint32_t timer) {
  WordMessage request = {timer};
  OutcomeResponse response = {};
  int rc = qorext_exchange(kSetBsrTimer, request, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_set_bsr_timer: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  if (response.outcome != kOutcomeOk) {
    LOGE("qor_qmi_sprint_set_bsr_timer: Set BSR timer failed (%d).", response.error);
    return 0;
  }
  return 1;
}

void qor_qmi_sprint_get_lte_ul_dl_channel(uint32_t* first, uint32_t* second, uint8_t* third,
                                          uint8_t* fourth) {
  LteChannelResponse response = {};
  int rc = qorext_exchange(kGetLteChannel, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_get_lte_ul_dl_channel: qmi_client_send_msg_sync failed (%d).", rc);
    return;
  }
  if (response.outcome != kOutcomeOk) {
    LOGE("qor_qmi_sprint_get_lte_ul_dl_channel: failed (%d).", response.error);
    return;
  }
  if (first != nullptr && response.first_valid != 0) *first = response.first;
  if (second != nullptr && response.second_valid != 0) *second = response.second;
  if (third != nullptr && response.third_valid != 0) *third = response.third;
  if (fourth != nullptr && response.fourth_valid != 0) *fourth = response.fourth;
}

int qor_qmi_sprint_get_active_ehrpd_apn(ActiveApnResponse* response) {
  if (response == nullptr) {
    LOGE("qor_qmi_sprint_get_active_ehrpd_apn: NULL point");
    return -1;
  }
  *response = {};
  int rc = qorext_exchange(kGetActiveEhrpdApn, *response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_get_active_ehrpd_apn: qmi_client_send_msg_sync failed (%d).", rc);
  }
  return rc;
}

TotOrderResponse qor_qmi_sprint_get_tot_order() {
  TotOrderResponse response = {};
  int rc = qorext_exchange(kGetTotOrder, response);
  if (rc != 0) LOGE("qor_qmi_sprint_get_tot_order: qmi_client_send_msg_sync failed (%d).", rc);
  return response;
}

int qor_qmi_sprint_update_tot_order(TotOrderRequest& order) {
  OutcomeResponse response = {};
  int rc = qorext_exchange(kUpdateTotOrder, order, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_update_tot_order: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  if (response.outcome != kOutcomeOk) {
    LOGE("qor_qmi_sprint_update_tot_order: Update TOT order failed (%d).", response.error);
    return 0;
  }
  return 1;
}

uint32_t qor_qmi_sprint_read_band(uint32_t selector) {
  WordMessage request = {selector};
  ReadBandResponse response = {};
  int rc = qorext_exchange(kReadBand, request, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_read_band: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  if (response.status != kStatusOk) {
    LOGE("qor_qmi_sprint_read_band: Read Band failed.");
    return 0;
  }
  return response.band;
}

int qor_qmi_sprint_write_band(uint32_t selector, uint32_t band) {
  WriteBandRequest request = {selector, band};
  WordMessage response = {};
  int rc = qorext_exchange(kWriteBand, request, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_write_band: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  if (response.value != kStatusOk) {
    LOGE("qor_qmi_sprint_write_band: Read Band failed.");  // the read's words, and meant
    return 0;
  }
  return 1;
}

int qor_qmi_sprint_switch_proflie(uint32_t profile) {
  WordMessage request = {profile};
  WordMessage response = {};
  int rc = qorext_exchange(kSwitchProfile, request, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_switch_proflie: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  if (response.value != kStatusOk) {
    LOGE("qor_qmi_sprint_switch_proflie: failed.");
    return 0;
  }
  return 1;
}
