// SPDX-License-Identifier: Apache-2.0
// Set NAM information: writes one record into fifteen items and, if it changes, the service
// programming code.
#include <string.h>

#include "src/carrier/carrier_handler.h"
#include "src/carrier/digits.h"
#include "src/carrier/nam.h"
#include "src/carrier_modem/operations.h"
#include "src/host/base/log.h"

namespace {

constexpr size_t kSpcSize = sizeof NamRecord::new_spc;
constexpr int kSpcErrorNumber = 19;
constexpr uint32_t kSpcFailure = 4;

// Whether the write in progress changes the service programming code. Only the request loop's
// thread uses it.
bool g_is_spc_changed = false;

// Writes items in order from one buffer and keeps the first failure. Bytes that are not set keep
// the value that was read from the modem, or that of the item before.
class NamWriter {
 public:
  void start_from_modem(const NamItem& item) { read_nam_item(item, buffer_); }
  NamWriter& u8(size_t offset, uint8_t value) {
    buffer_[offset] = value;
    return *this;
  }
  NamWriter& u16(size_t offset, uint16_t value) {
    store_le16(buffer_ + offset, value);
    return *this;
  }
  NamWriter& u32(size_t offset, uint32_t value) {
    store_le32(buffer_ + offset, value);
    return *this;
  }
  NamWriter& index() { return u8(kNamIndex, 0); }
  void write(const NamItem& item) { note(write_nam_item(item, buffer_)); }

  void note(uint32_t result) { failure_.note(result); }
  void note(int number, uint32_t result) { failure_.note(number, result); }
  const FirstFailure& failure() const { return failure_; }

 private:
  NamItemBuffer buffer_ = {};
  FirstFailure failure_;
};

void encode_identities(const NamRecord& record, NamValues& values) {
  values.mcc = encode_three_digits(record.mcc);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM IMSI_MCC  %d ", values.mcc);
  values.imsi_11_12 = encode_two_digits(record.imsi_11_12);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM IMSI_11_12  %d ", values.imsi_11_12);

  values.min2 = encode_three_digits(record.min);
  values.min1 = encode_seven_digits(record.min + kAreaDigits);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM MIN1 %lu MIN2 %d ",
       static_cast<unsigned long>(values.min1), values.min2);

  const char* digits = record.imsiT;
  values.mcc_t = encode_three_digits(digits);
  values.imsi_t_11_12 = encode_two_digits(digits += kMccDigits);
  values.imsi_t_s2 = encode_three_digits(digits += kClassDigits);
  values.imsi_t_s1 = encode_seven_digits(digits + kAreaDigits);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM MccT %d imsiT11_12 %d imsiT_s1 %lu imsiT_s2 %d ",
       values.mcc_t, values.imsi_t_11_12, static_cast<unsigned long>(values.imsi_t_s1),
       values.imsi_t_s2);
}

// Reports the first character that is not a digit.
bool is_digits(const char* code) {
  for (size_t i = 0; i < kSpcSize; ++i) {
    if (code[i] >= '0' && code[i] <= '9') continue;
    LOGE("Byte (%d) of SPC is not digit.", static_cast<int>(i));
    return false;
  }
  return true;
}

// A code with another character than a digit counts as unchanged; the items are still written.
void check_spc_change(const char* current_spc, const char* new_spc) {
  g_is_spc_changed = strncmp(current_spc, new_spc, kSpcSize) != 0;
  LOGE("isSpcChanged = %d, (%.6s ~ %.6s)", g_is_spc_changed, current_spc, new_spc);
  if (g_is_spc_changed) g_is_spc_changed = is_digits(new_spc);
}

void convert_system_values(const NamRecord& record, NamValues& values) {
  values.sid = static_cast<uint16_t>(record.hSid);
  values.nid = static_cast<uint16_t>(record.hNid);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM SID %d NID %d ", values.sid, values.nid);
  values.primary_a = static_cast<uint16_t>(record.pCdmaA);
  values.primary_b = static_cast<uint16_t>(record.pCdmaB);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM pChannelA %d pChannelB %d sChannelA sChannelB ",
       values.primary_a, values.primary_b);
  values.secondary_a = static_cast<uint16_t>(record.sCdmaA);
  values.secondary_b = static_cast<uint16_t>(record.sCdmaB);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM sChannelA %d sChannelB %d sChannelA sChannelB ",
       values.secondary_a, values.secondary_b);
  values.scm = static_cast<uint8_t>(record.scm);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM SCM %d ", values.scm);
  values.vocoder = vocoder_to_item(record.vocoder);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM Vocoder %d ", values.vocoder);
  values.overload_class = static_cast<uint8_t>(record.access_overload);
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM AccessOverload %d ", values.overload_class);
}

// The MDN is written from a zeroed buffer, not from what the modem holds: a shorter number leaves
// no digits of a longer one.
void write_mdn(NamWriter& writer, const char (&mdn)[16]) {
  LOGE("qorext_hook_sprint_set_mdn_to_nv:  WRITE NV_DIR_NUMBER_PCS_I %d ", 0);
  NamItemBuffer buffer = {};
  size_t count = strnlen(mdn, kMdnDigits);
  buffer[kMdnCountAt] = static_cast<uint8_t>(count);
  for (size_t i = 0; i < count; ++i) {
    LOGE("qorext_hook_sprint_set_mdn_to_nv:  mdn_number %d \n", static_cast<uint8_t>(mdn[i]));
    buffer[kMdnDigitsAt + i] = encode_dial_digit(mdn[i]);
    LOGE("qorext_hook_sprint_read_mdn_from_nv:  nv output %d \n", buffer[kMdnDigitsAt + i]);
  }
  uint32_t rc = write_nam_item(kMdnItem, buffer);
  writer.note(rc);
  LOGE("qorext_hook_sprint_set_mdn_to_nv:  NV PCS WRITE COMPLETE %d ", rc);
  LOGE("qorext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK MDN  %d ", rc);
}

// These items are read first, so that the bytes around the values written stay as they are.
void write_read_modified(NamWriter& writer, const NamValues& values) {
  writer.start_from_modem(kMin1Item);
  writer.index().u32(kS1At, values.min1).write(kMin1Item);
  writer.start_from_modem(kMin2Item);
  writer.index().u16(kS2At, values.min2).write(kMin2Item);
  writer.start_from_modem(kImsiTs1Item);
  writer.index().u32(kS1At, values.imsi_t_s1).write(kImsiTs1Item);
  writer.start_from_modem(kImsiTs2Item);
  writer.index().u16(kS2At, values.imsi_t_s2).write(kImsiTs2Item);
  writer.start_from_modem(kSidNidItem);
  writer.index().u16(kSidAt, values.sid).u16(kNidAt, values.nid).write(kSidNidItem);
}

// Of these items only the vocoder and the overload class are read first.
void write_rest(NamWriter& writer, const NamValues& values) {
  writer.u8(kScmAt, values.scm).write(kScmItem);
  writer.index().u8(k1112At, values.imsi_11_12).write(kImsi1112Item);
  writer.index().u16(kMccAt, values.mcc).write(kMccItem);
  writer.index()
      .u16(kChannelAAt, values.primary_a)
      .u16(kChannelBAt, values.primary_b)
      .write(kPrimaryChannelsItem);
  writer.index()
      .u16(kChannelAAt, values.secondary_a)
      .u16(kChannelBAt, values.secondary_b)
      .write(kSecondaryChannelsItem);
  writer.start_from_modem(kVocoderItem);
  writer.u16(kVocoderAt, values.vocoder).write(kVocoderItem);
  writer.index().u16(kMccAt, values.mcc_t).write(kMccTItem);
  writer.index().u8(k1112At, values.imsi_t_11_12).write(kImsiT1112Item);
  writer.start_from_modem(kOverloadClassItem);
  writer.index().u8(kOverloadClassAt, values.overload_class).write(kOverloadClassItem);
}

// Attempts every step, also after a failure.
uint32_t write_block(const NamRecord& record, const NamValues& values, const uint8_t* current_spc) {
  LOGE("qorext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK  %d ", 0);
  NamWriter writer;
  write_mdn(writer, record.mdn);
  write_read_modified(writer, values);
  write_rest(writer, values);
  if (g_is_spc_changed) {
    auto new_spc = reinterpret_cast<const uint8_t*>(record.new_spc);
    int changed = qor_qmi_sprint_write_spc(current_spc, new_spc);
    writer.note(kSpcErrorNumber, changed != 0 ? 0 : kSpcFailure);
  }
  LOGE("qorext_hook_sprint_set_nam_block_request_info:  SET NAM BLOCK NV ENTRY COMPLETE  %d ", 0);

  const FirstFailure& failure = writer.failure();
  if (failure.result() != 0) {
    LOGE("qorext_hook_sprint_set_nam_block_request_info:  ERROR FOUND %d ", failure.number());
  }
  return failure.result();
}

}  // namespace

uint32_t set_nam_info(const uint8_t* request, CarrierReply&) {
  LOGE("qorext_hook_sprint_set_nv_spc_protected_data_from_oem: EVENT VALUE %d ", cdma_id(request));
  LOGE("qorext_hook_sprint_set_nam_info:  SET NAM INFO  %d ", 0);
  NamRecord record;
  memcpy(&record, request + kCdmaPayload, sizeof record);

  NamValues values = {};
  encode_identities(record, values);
  const uint8_t* current_spc = request + kCdmaCode;
  check_spc_change(reinterpret_cast<const char*>(current_spc), record.new_spc);
  convert_system_values(record, values);
  return status_from_modem(write_block(record, values, current_spc));
}
