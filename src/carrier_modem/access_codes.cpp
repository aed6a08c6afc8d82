// SPDX-License-Identifier: Apache-2.0
#include "src/carrier_modem/access_codes.h"

#include <string.h>

#include "src/carrier_modem/carrier_clients.h"
#include "src/carrier_modem/standard_messages.h"
#include "src/host/base/log.h"

int qcril_qmi_nas_qor_cdma_validate_and_write_akey(const uint8_t* code, const uint8_t* akey,
                                                   int32_t akey_length) {
  LOGE("qcril_qmi_nas_qor_cdma_validate_and_write_akey entered ");
  if (akey_length != int32_t{kAkeySize}) {
    LOGE("akey_len != sizeof(akey_req_msg.akey)");
    return 0;
  }
  AkeyRequest request = {};
  QmiResult response = {};
  memcpy(request.spc, code, sizeof request.spc);
  memcpy(request.akey, akey, sizeof request.akey);

  int rc = qmi_qorext_sprint_nas_send_msg_sync(kNasWriteAkey, &request, sizeof request, &response,
                                               sizeof response);
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

  int rc = qmi_qorext_sprint_dms_send_msg_sync(kDmsWriteSpc, &request, sizeof request, &response,
                                               sizeof response);
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

  int rc = qmi_qorext_sprint_dms_send_msg_sync(kDmsVerifySubsidyLock, &request, sizeof request,
                                               &response, sizeof response);
  if (rc != 0) {
    // The code change's words, and meant.
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
