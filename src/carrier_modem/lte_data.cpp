// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/lte_data.h"

#include "src/carrier_modem/carrier_clients.h"
#include "src/carrier_modem/standard_messages.h"
#include "src/carrier_modem/vendor_operations.h"
#include "src/host/base/log.h"
#include "src/vendor/vendor_client.h"

namespace {

constexpr uint32_t kInformationUnavailable = 93;  // error of a radio that is not transmitting

uint32_t get_service_state() {
  LteServiceStateResponse response = {};
  int rc = qorext_exchange(kGetLteServiceState, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_get_lte_service_state: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  if (response.outcome != kOutcomeOk) {
    LOGE("qor_qmi_sprint_get_lte_option: Get LTE service state failed (%d).", response.error);
    return 0;
  }
  return response.state;
}

void get_channels(LteData& data) {
  uint32_t first = data.channel_first;
  uint32_t second = data.channel_second;
  qor_qmi_sprint_get_lte_ul_dl_channel(&first, &second, &data.channel_third, &data.channel_fourth);
  data.channel_first = first;
  data.channel_second = second;
}

bool get_serving_system(LteData& data) {
  ServingSystemResponse response = {};
  int rc = qmi_qorext_sprint_nas_send_msg_sync(kNasGetServingSystem, nullptr, 0, &response,
                                               sizeof response);
  if (rc != 0 || response.qmi.result != 0) {
    LOGE("get_lte_data: QMI_NAS_GET_SERVING_SYSTEM failed (%d), error (%d).", rc,
         response.qmi.error);
    return false;
  }
  if (response.plmn_valid != 0) {
    data.mcc = response.mcc;
    data.mnc = response.mnc;
  }
  if (response.cell_id_valid != 0) data.cell_id = response.cell_id;
  return true;
}

bool get_signal(LteData& data) {
  SigInfoResponse response = {};
  int rc =
      qmi_qorext_sprint_nas_send_msg_sync(kNasGetSigInfo, nullptr, 0, &response, sizeof response);
  if (rc != 0 || response.qmi.result != 0) {
    LOGE("get_lte_data: QMI_NAS_GET_SIG_INFO failed (%d), error (%d).", rc, response.qmi.error);
    return false;
  }
  if (response.lte_valid != 0) {
    data.rssi = response.lte_rssi;
    data.rsrp = response.lte_rsrp;
    data.rsrq = response.lte_rsrq;
  }
  return true;
}

bool get_transmit_power(LteData& data) {
  TxRxInfoRequest request = {kRadioInterfaceLte};
  TxRxInfoResponse response = {};
  int rc = qmi_qorext_sprint_nas_send_msg_sync(kNasGetTxRxInfo, &request, sizeof request, &response,
                                               sizeof response);
  if (rc != 0 || response.qmi.result != 0) {
    LOGE("get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (%d), error (%d).", rc, response.qmi.error);
    if (response.qmi.error != kInformationUnavailable) return false;
    data.tx_power = 0;
  }
  if (response.tx_valid != 0) data.tx_power = response.tx_power;
  return true;
}

}  // namespace

int qor_qmi_sprint_get_lte_data(LteData* data) {
  LOGE("qor_qmi_sprint_get_lte_data entered ");
  if (data == nullptr) {
    LOGE("qor_qmi_sprint_get_lte_data: p_lte_data == NULL");
    return 0;
  }
  data->service_state = get_service_state();
  get_channels(*data);
  return get_serving_system(*data) && get_signal(*data) && get_transmit_power(*data) ? 1 : 0;
}
