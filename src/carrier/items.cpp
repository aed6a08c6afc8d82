// SPDX-License-Identifier: Apache-2.0
// NV items and access codes.
#include "src/carrier/carrier_handler.h"
#include "src/carrier_modem/operations.h"
#include "src/host/base/log.h"

namespace {

constexpr int32_t kMobPRevItem = 28;
constexpr uint32_t kMobPRevSize = 4;

constexpr uint32_t kCodeLength = 6;
constexpr int kSubsidyLock = 3;

constexpr uint32_t kItemBufferSize = 1024;

// A general request's payload: u32 item, record, offset, length, then the data.
struct ItemAddress {
  int32_t item;
  int32_t record;
  int32_t offset;
  uint32_t length;
};
static_assert(sizeof(ItemAddress) == 16);

constexpr size_t kItemData = kCdmaPayload + sizeof(ItemAddress);
constexpr uint32_t kReadTrailer = 4;  // zero bytes after the data of a read

}  // namespace

uint32_t get_mob_p_rev(const uint8_t*, CarrierReply& reply) {
  LOGE("%s", "Enter qorext_hook_sprint_get_mob_p_pre() \n");
  uint8_t item[kItemBufferSize] = {};
  uint32_t rc = qor_qmi_sprint_rde_read(kMobPRevItem, 0, 0, item, sizeof item, nullptr);
  LOGE("qorext_hook_sprint_get_nam_item: READ NV VALUE %d ", rc);
  // Only the first byte of the item is used; a failed read replies with 0.
  LOGE("get mob_cai_rev %lu ", static_cast<unsigned long>(item[0]));
  reply.data[0] = item[0];
  reply.length = kMobPRevSize;
  return status_from_modem(rc);
}

uint32_t verify_subsidy_lock_code(const uint8_t* request, CarrierReply& reply) {
  LOGE("%s", "Enter qorext_hook_sprint_check_subsidy_lock_passwd() \n");
  LOGE("qorext_hook_sprint_verify_subsidy_lock: ENTER VERIFY SUBSIDY LOCK %d ", kSubsidyLock);
  reply.length = kCodeLength;  // six zeros: the code itself is not sent back
  bool matches = verify_subsidy_lock(request + kCdmaCode) != 0;
  return matches ? kStatusSuccess : kStatusSubsidyLockRefused;
}

uint32_t write_akey(const uint8_t* request, CarrierReply&) {
  LOGE("qorext_hook_sprint_write_akey:  ENTER ");
  auto length = static_cast<int32_t>(cdma_length(request));
  int written = qcril_qmi_nas_qor_cdma_validate_and_write_akey(request + kCdmaCode,
                                                               request + kCdmaPayload, length);
  return written == 1 ? kStatusSuccess : kStatusFailure;
}

uint32_t rde_write(const uint8_t* request, CarrierReply&) {
  LOGE("qorext_hook_sprint_rde_write: FUNCTION enter.");
  auto to = load<ItemAddress>(request + kCdmaPayload);
  if (qor_qmi_sprint_rde_write(to.item, to.record, to.offset, to.length, request + kItemData) !=
      kRdeSuccess) {
    LOGE("RDE write error");
    return kStatusFailure;
  }
  LOGE("RDE Write success for element %u", to.item);
  return kStatusSuccess;
}

uint32_t rde_read(const uint8_t* request, CarrierReply& reply) {
  LOGE("qorext_hook_sprint_rde_read: Function Enter.");
  auto from = load<ItemAddress>(request + kCdmaPayload);
  from.length = 0;  // stays 0 when the item does not fit
  uint8_t* data = reply.data + sizeof from;
  if (qor_qmi_sprint_rde_read(from.item, from.record, from.offset, data, kItemBufferSize,
                              &from.length) != kRdeSuccess) {
    LOGE("RDE Read error");
    return kStatusFailure;
  }
  memcpy(reply.data, &from, sizeof from);
  reply.length = sizeof from + from.length + kReadTrailer;
  return kStatusSuccess;
}
