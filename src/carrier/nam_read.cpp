// SPDX-License-Identifier: Apache-2.0
// Get NAM information: reads fifteen items into one record.
#include <string.h>

#include <algorithm>

#include "src/carrier/carrier_handler.h"
#include "src/carrier/digits.h"
#include "src/carrier/nam.h"
#include "src/host/base/log.h"

namespace {

// Reads items in order into one buffer and keeps the first failure. A failed read leaves the buffer
// zero and does not stop the reads after it.
class NamReader {
 public:
  bool read(const NamItem& item) {
    uint32_t rc = read_nam_item(item, buffer_);
    failure_.note(rc);
    return rc == 0;
  }
  uint8_t u8(size_t offset) const { return buffer_[offset]; }
  uint16_t u16(size_t offset) const { return load_le16(buffer_ + offset); }
  uint32_t u32(size_t offset) const { return load_le32(buffer_ + offset); }
  const uint8_t* at(size_t offset) const { return buffer_ + offset; }
  const FirstFailure& failure() const { return failure_; }

 private:
  NamItemBuffer buffer_;
  FirstFailure failure_;
};

// Every position becomes a digit: a shorter number is filled up with '0'.
void decode_mdn(const NamReader& item, char (&mdn)[16]) {
  size_t count = std::min<size_t>(size_t{item.u8(kMdnCountAt)} + 1, kMdnDigits);
  strncpy(mdn, reinterpret_cast<const char*>(item.at(kMdnDigitsAt)), count);
  for (size_t i = 0; i < kMdnDigits; ++i) {
    auto code = static_cast<uint8_t>(mdn[i]);
    LOGE("qorext_hook_sprint_read_mdn_from_nv:  mdn_number %d \n", code);
    mdn[i] = decode_dial_digit(code);
    LOGE("qorext_hook_sprint_read_mdn_from_nv:  mdn_number incremented by 0 %d ",
         static_cast<uint8_t>(mdn[i]));
  }
}

void read_mdn(NamReader& item, NamValues& values) {
  LOGE("qorext_hook_sprint_read_mdn_from_nv:  READ NV_DIR_NUMBER_PCS_I %d ", 0);
  if (item.read(kMdnItem)) decode_mdn(item, values.mdn);
  LOGE("qorext_hook_sprint_read_mdn_from_nv:  READ NV_DIR_NUMBER_PCS_I COMPLETE %s ", values.mdn);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MDN  %s ", values.mdn);
}

// Reads are numbered in this order, from 0 for the MDN; the number of the first failure is logged.
void read_identities(NamReader& item, NamValues& values) {
  item.read(kMin1Item);
  values.min1 = item.u32(kS1At);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MIN1  %lu ",
       static_cast<unsigned long>(values.min1));
  item.read(kMin2Item);
  values.min2 = item.u16(kS2At);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE MIN2  %d ", values.min2);
  item.read(kImsiTs1Item);
  values.imsi_t_s1 = item.u32(kS1At);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_S1  %lu ",
       static_cast<unsigned long>(values.imsi_t_s1));
  item.read(kImsiTs2Item);
  values.imsi_t_s2 = item.u16(kS2At);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_S2  %d ",
       values.imsi_t_s2);
  item.read(kSidNidItem);
  values.sid = item.u16(kSidAt);
  values.nid = item.u16(kNidAt);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE SID NID  %d ", values.sid);
  item.read(kScmItem);
  values.scm = item.u8(kScmAt);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE SCM  %d ", values.scm);
  item.read(kImsi1112Item);
  values.imsi_11_12 = item.u8(k1112At);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_11_12  %d ",
       values.imsi_11_12);
  item.read(kMccItem);
  values.mcc = item.u16(kMccAt);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_MCC %d ", values.mcc);
}

void read_system_values(NamReader& item, NamValues& values) {
  item.read(kPrimaryChannelsItem);
  values.primary_a = item.u16(kChannelAAt);
  values.primary_b = item.u16(kChannelBAt);
  LOGE(
      "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE P_CHANNEL_A %d P_CHANNEL_B "
      "%d ",
      values.primary_a, values.primary_b);
  item.read(kSecondaryChannelsItem);
  values.secondary_a = item.u16(kChannelAAt);
  values.secondary_b = item.u16(kChannelBAt);
  LOGE(
      "qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE S_CHANNEL_A %d S_CHANNEL_B "
      "%d ",
      values.secondary_a, values.secondary_b);
  item.read(kVocoderItem);
  values.vocoder = item.u16(kVocoderAt);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE VOCODER %d ", values.vocoder);
  item.read(kMccTItem);
  values.mcc_t = item.u16(kMccAt);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_MCC_T %d ",
       values.mcc_t);
  item.read(kImsiT1112Item);
  values.imsi_t_11_12 = item.u8(k1112At);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE IMSI_T_11_12 %d ",
       values.imsi_t_11_12);
  item.read(kOverloadClassItem);
  values.overload_class = item.u8(kOverloadClassAt);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM VALUE OVERLOAD CLASS %d ",
       values.overload_class);
}

void decode_texts(const NamValues& values, NamRecord& record) {
  char* digits = record.imsiT;
  decode_three_digits(values.mcc_t, digits);
  decode_two_digits(values.imsi_t_11_12, digits += kMccDigits);
  decode_three_digits(values.imsi_t_s2, digits += kClassDigits);
  decode_seven_digits(values.imsi_t_s1, digits + kAreaDigits);
  LOGE("qorext_hook_sprint_get_nam_info: NAM INFO imsiT => %s ", record.imsiT);

  decode_three_digits(values.min2, record.min);
  decode_seven_digits(values.min1, record.min + kAreaDigits);
  LOGE("qorext_hook_sprint_get_nam_info: NAM INFO MIN => %s ", record.min);

  decode_two_digits(values.imsi_11_12, record.imsi_11_12);
  LOGE("qorext_hook_sprint_get_nam_info: NAM INFO IMSI_11_12 => %s ", record.imsi_11_12);

  decode_three_digits(values.mcc, record.mcc);
  decode_three_digits(values.mcc_t, record.mccT);
  LOGE("qorext_hook_sprint_get_nam_info: NAM INFO Mcc => %s MccT => %s ", record.mcc, record.mccT);
}

// Runs only when every read has succeeded; otherwise the parent gets a record of zeros.
void decode_record(const NamValues& values, NamRecord& record) {
  memcpy(record.mdn, values.mdn, sizeof record.mdn);
  decode_texts(values, record);

  record.hSid = values.sid;
  record.hNid = values.nid;
  record.scm = values.scm;
  LOGE("qorext_hook_sprint_get_nam_info: NAM INFO hSid => %d hNid => %d scm => %d ", record.hSid,
       record.hNid, record.scm);
  record.pCdmaA = values.primary_a;
  record.pCdmaB = values.primary_b;
  LOGE("qorext_hook_sprint_get_nam_info: NAM INFO pCdmaA => %d pCdmaB => %d  ", record.pCdmaA,
       record.pCdmaB);
  record.sCdmaA = values.secondary_a;
  record.sCdmaB = values.secondary_b;
  LOGE("qorext_hook_sprint_get_nam_info: NAM INFO  sCdmaA => %d sCdmaB => %d ", record.sCdmaA,
       record.sCdmaB);
  record.vocoder = vocoder_from_item(values.vocoder);
  record.access_overload = values.overload_class;
  LOGE("qorext_hook_sprint_get_nam_info: NAM INFO Vocoder => %d Access_Overload => %d ",
       record.vocoder, record.access_overload);
}

}  // namespace

uint32_t get_nam_info(const uint8_t*, CarrierReply& reply) {
  LOGE("qorext_hook_sprint_get_nam_info:  GET NAM INFO  %d ", 0);
  LOGE("qorext_hook_sprint_get_nam_block_request_info:  GET NAM BLOCK  %d ", 0);
  NamReader item;
  NamValues values = {};
  read_mdn(item, values);
  read_identities(item, values);
  read_system_values(item, values);

  NamRecord record = {};
  const FirstFailure& failure = item.failure();
  if (failure.result() != 0) {
    LOGE("qorext_hook_sprint_get_nam_block_request_info:  ERROR FOUND %d ", failure.number());
  } else {
    LOGE("qorext_hook_sprint_get_nam_info:  NO REQUEST ERRORS  %d ", 0);
    decode_record(values, record);
  }
  put_bytes(reply, &record, sizeof record);
  return status_from_modem(failure.result());
}
