// SPDX-License-Identifier: Apache-2.0
// Carrier settings that the modem keeps.
#include "src/carrier/carrier_handler.h"
#include "src/carrier_modem/operations.h"
#include "src/host/base/log.h"

namespace {

constexpr uint32_t kBandClass10 = 0;
constexpr uint32_t kBandClass14 = 1;

constexpr int32_t kLteOptionItem = 10017;
constexpr int32_t kDdtmItem = 10018;

constexpr uint8_t kNoResetFlag = 255;  // for a payload of another length than 1
constexpr uint32_t kItemBufferSize = 1024;

uint32_t payload_u32(const uint8_t* request) { return load_le32(request + kCdmaPayload); }

// The status is 0 also after a failure, with the band 0.
uint32_t get_band(uint32_t selector, CarrierReply& reply) {
  LOGE("qorext_hook_sprint_get_BC10_status:  ENTER FUNCTION  %d ", 0);
  uint32_t band = qor_qmi_sprint_read_band(selector);
  LOGE("qorext_hook_sprint_get_BC10_BC14_status:  status = %d ", band);
  put_le32(reply, band);
  return kStatusSuccess;
}

uint32_t set_band(uint32_t selector, const uint8_t* request) {
  LOGE("qorext_hook_sprint_set_BC10_BC14_status:  ENTER");
  uint32_t band = payload_u32(request);
  LOGE("qorext_hook_sprint_set_BC10_BC14_status:  status = %d ", band);
  return status_of(qor_qmi_sprint_write_band(selector, band) != 0);
}

}  // namespace

uint32_t get_bc10_status(const uint8_t*, CarrierReply& reply) {
  return get_band(kBandClass10, reply);
}

uint32_t get_bc14_status(const uint8_t*, CarrierReply& reply) {
  return get_band(kBandClass14, reply);
}

uint32_t set_bc10_status(const uint8_t* request, CarrierReply&) {
  return set_band(kBandClass10, request);
}

uint32_t set_bc14_status(const uint8_t* request, CarrierReply&) {
  return set_band(kBandClass14, request);
}

uint32_t set_roaming_list_segment(const uint8_t* request, CarrierReply&) {
  LOGE("qorext_hook_sprint_set_roaming_list_segment:  ENTER  %d ", 0);
  uint32_t size = payload_u32(request);
  LOGE("qorext_hook_sprint_set_roaming_list_segment:  p_prl->size (%d)", size);
  const uint8_t* data = request + kCdmaPayload + sizeof size;
  return status_of(qor_qmi_sprint_set_roaming_list_segment(size, data) != 0);
}

uint32_t set_active_profile(const uint8_t* request, CarrierReply&) {
  LOGE("qorext_hook_sprint_set_Active_Profile:  ENTER  %d ", 0);
  uint32_t profile = payload_u32(request);
  LOGE("qorext_hook_sprint_set_Active_profile:   profile = %d ", profile);
  return status_of(qor_qmi_sprint_switch_proflie(profile) != 0);
}

uint32_t factory_reset(const uint8_t* request, CarrierReply&) {
  uint32_t length = cdma_length(request);
  uint8_t flag = length == 1 ? request[kCdmaPayload] : kNoResetFlag;
  LOGE("factory_reset: EVENT VALUE %d, msg_len (%d), reset_flag (%d) ", cdma_id(request), length,
       flag);
  int result = qor_qmi_sprint_fatory_reset(flag);
  LOGE("Received factory reset result - %d", result);
  return status_of(result != 0);
}

uint32_t get_ddtm_preference(const uint8_t*, CarrierReply& reply) {
  LOGE("qorext_hook_sprint_get_ddtm_preference:  ENTER  %d ", 0);
  uint8_t ddtm = 0;
  if (qor_qmi_sprint_rde_read(kDdtmItem, 0, 0, &ddtm, sizeof ddtm, nullptr) != kRdeSuccess) {
    // The text of the set: deliberate.
    LOGE("qorext_hook_sprint_set_ddtm_preference: Fail to write.");
    return kStatusFailure;
  }
  LOGE("qorext_hook_sprint_get_ddtm_preference:   ddtm = %d ", ddtm);
  put_le32(reply, ddtm);  // one byte in the modem, 32 bits for the parent
  return kStatusSuccess;
}

uint32_t set_ddtm_preference(const uint8_t* request, CarrierReply&) {
  LOGE("qorext_hook_sprint_set_ddtm_preference:  ENTER  %d ", 0);
  uint8_t ddtm = request[kCdmaPayload];
  LOGE("qorext_hook_sprint_set_ddtm_preference:   ddtm = %d ", ddtm);
  if (qor_qmi_sprint_rde_write(kDdtmItem, 0, 0, sizeof ddtm, &ddtm) != kRdeSuccess) {
    LOGE("qorext_hook_sprint_set_ddtm_preference: Fail to write.");
    return kStatusFailure;
  }
  return kStatusSuccess;
}

uint32_t get_bsr_timer(const uint8_t* request, CarrierReply& reply) {
  // The text of the set: deliberate.
  LOGE("handle_set_bsr_timer: EVENT VALUE %d ", cdma_id(request));
  uint32_t timer = qor_qmi_sprint_get_bsr_timer();
  LOGE("Get BSR timer result - %d", timer);
  put_le32(reply, timer);
  return kStatusSuccess;
}

uint32_t set_bsr_timer(const uint8_t* request, CarrierReply&) {
  LOGE("handle_set_bsr_timer: EVENT VALUE %d ", cdma_id(request));
  int result = qor_qmi_sprint_set_bsr_timer(payload_u32(request));
  LOGE("Set BSR timer result - %d", result);
  return status_of(result > 0);
}

uint32_t get_lte_option(const uint8_t* request, CarrierReply& reply) {
  LOGE("handle_get_lte_option: EVENT VALUE %d ", cdma_id(request));
  uint32_t rc =
      qor_qmi_sprint_rde_read(kLteOptionItem, 0, 0, reply.data, kItemBufferSize, &reply.length);
  return status_of(rc == kRdeSuccess);
}

uint32_t set_lte_option(const uint8_t* request, CarrierReply&) {
  // The text of the get: deliberate.
  LOGE("handle_get_lte_option: EVENT VALUE %d ", cdma_id(request));
  uint32_t rc =
      qor_qmi_sprint_rde_write(kLteOptionItem, 0, 0, cdma_length(request), request + kCdmaPayload);
  return status_of(rc == kRdeSuccess);
}

uint32_t refuse_obsolete(const uint8_t* request, CarrierReply&) {
  LOGE("qorext_hook_sprint_handle_obsolete_request: ENTER FUNCTION %d ", cdma_id(request));
  return kStatusNotSupported;
}
