// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/operations.h"

#include <string.h>

#include "src/carrier_modem/carrier_clients.h"
#include "src/carrier_modem/standard_messages.h"
#include "src/host/base/log.h"

namespace {

constexpr uint32_t kNoRadio = 93;  // the QMI error of a radio that is not transmitting

void get_channels(LteData& data) {
  // The 32-bit fields of a packed record are not aligned, so their addresses are not passed.
  uint32_t first_value = data.channel_first_value;
  uint32_t second_value = data.channel_second_value;
  qor_qmi_sprint_get_lte_ul_dl_channel(&first_value, &second_value, &data.channel_third_value,
                                       &data.channel_fourth_value);
  data.channel_first_value = first_value;
  data.channel_second_value = second_value;
}

// The queries below log their failure and return false; what is not valid keeps its value.

bool get_serving_system(LteData& data) {
  ServingSystemResponse response = {};
  int rc = nas_exchange(kNasGetServingSystem, response);
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
  int rc = nas_exchange(kNasGetSigInfo, response);
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
  int rc = nas_exchange(kNasGetTxRxInfo, request, response);
  if (rc != 0 || response.qmi.result != 0) {
    LOGE("get_lte_data: QMI_NAS_GET_TX_RX_INFO failed (%d), error (%d).", rc, response.qmi.error);
    // A radio that does not transmit has no power to report; the record then counts as complete.
    if (response.qmi.error != kNoRadio) return false;
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
  data->service_state = qor_qmi_sprint_get_lte_service_state();
  get_channels(*data);
  return get_serving_system(*data) && get_signal(*data) && get_transmit_power(*data) ? 1 : 0;
}

int qcril_qmi_nas_qor_cdma_validate_and_write_akey(const uint8_t* code, const uint8_t* akey,
                                                   int32_t akey_length) {
  // None of these operations logs a key or a code.
  LOGE("qcril_qmi_nas_qor_cdma_validate_and_write_akey entered ");
  if (akey_length != int32_t{kAkeySize}) {
    LOGE("akey_len != sizeof(akey_req_msg.akey)");
    return 0;
  }
  AkeyRequest request = {};
  QmiResult response = {};
  memcpy(request.spc, code, sizeof request.spc);
  memcpy(request.akey, akey, sizeof request.akey);

  int rc = nas_exchange(kNasWriteAkey, request, response);
  if (rc != 0) {
    LOGE("validate_and_write_akey: qmi_client_send_msg_sync failed (%d).", rc);
    return 0;
  }
  if (response.result != 0) {
    LOGE("validate_and_write_akey Error = %d", response.error);
    return 0;
  }
  return 1;
}

int qor_qmi_sprint_write_spc(const uint8_t* current_spc, const uint8_t* new_spc) {
  LOGE("qor_qmi_sprint_write_spc entered ");
  SpcRequest request = {};
  QmiResult response = {};
  memcpy(request.current_spc, current_spc, sizeof request.current_spc);
  memcpy(request.new_spc, new_spc, sizeof request.new_spc);

  int rc = dms_exchange(kDmsWriteSpc, request, response);
  if (rc != 0) {
    LOGE("qor_qmi_sprint_write_spc: qmi_client_send_msg_sync (%d).", rc);
    return 0;
  }
  if (response.result != 0) {
    LOGE("qor_qmi_sprint_write_spc Error = %d", response.error);
    return 0;
  }
  return 1;
}

int verify_subsidy_lock(const uint8_t* code) {
  SubsidyLockRequest request = {};
  QmiResult response = {};
  memcpy(request.code, code, sizeof request.code);

  int rc = dms_exchange(kDmsVerifySubsidyLock, request, response);
  if (rc != 0) {
    // The text of the code change: deliberate.
    LOGE("qor_qmi_sprint_write_spc: qmi_client_send_msg_sync (%d).", rc);
    return 0;
  }
  if (response.result != 0) {
    LOGE(" qorext_hook_sprint_verify_subsidy_lock Error = %d", response.error);
    return 0;
  }
  LOGE(" qorext_hook_sprint_verify_subsidy_lock Success ");
  return 1;
}
