// SPDX-License-Identifier: Apache-2.0
// The number assignment module (NAM): the record of the parent, and the modem's items that store
// its values in the CDMA over-the-air encoding. Only NAM 0 is served.
#pragma once

#include <stddef.h>
#include <stdint.h>

// The record of the get reply and the set request. Digit texts are NUL-terminated.
struct NamRecord {
  char mdn[16];
  char min[16];
  uint32_t hSid;
  uint32_t hNid;
  uint32_t scm;
  char imsi_11_12[4];
  char mcc[4];
  uint32_t pCdmaA;
  uint32_t pCdmaB;
  uint32_t sCdmaA;
  uint32_t sCdmaB;
  uint32_t vocoder;
  char mccT[4];
  char imsiT[16];
  uint32_t access_overload;
  char new_spc[6];  // set only; not terminated
  uint8_t unused[2];
};
static_assert(sizeof(NamRecord) == 104);
static_assert(offsetof(NamRecord, hSid) == 32);
static_assert(offsetof(NamRecord, imsi_11_12) == 44);
static_assert(offsetof(NamRecord, pCdmaA) == 52);
static_assert(offsetof(NamRecord, vocoder) == 68);
static_assert(offsetof(NamRecord, imsiT) == 76);
static_assert(offsetof(NamRecord, access_overload) == 92);
static_assert(offsetof(NamRecord, new_spc) == 96);

// A NAM as the modem stores it, between its items and the parent's record.
struct NamValues {
  char mdn[16];  // digits, NUL-terminated
  uint32_t min1;
  uint16_t min2;
  uint32_t imsi_t_s1;
  uint16_t imsi_t_s2;
  uint16_t sid;
  uint16_t nid;
  uint8_t scm;
  uint8_t imsi_11_12;
  uint16_t mcc;
  uint16_t primary_a;
  uint16_t primary_b;
  uint16_t secondary_a;
  uint16_t secondary_b;
  uint16_t vocoder;
  uint16_t mcc_t;
  uint8_t imsi_t_11_12;
  uint8_t overload_class;
};

constexpr uint32_t kMdnDigits = 15;
constexpr size_t kAreaDigits = 3;  // the first of a MIN's ten
constexpr size_t kMccDigits = 3;   // of an IMSI_T, then two digits, then ten as in a MIN
constexpr size_t kClassDigits = 2;

// The modem's items, and how many bytes of each are written.
struct NamItem {
  int32_t id;
  uint32_t size;
};
constexpr NamItem kMdnItem = {8, 17};
constexpr NamItem kMin1Item = {25, 9};
constexpr NamItem kMin2Item = {26, 5};
constexpr NamItem kImsiTs1Item = {21, 9};
constexpr NamItem kImsiTs2Item = {22, 5};
constexpr NamItem kSidNidItem = {15, 81};
constexpr NamItem kScmItem = {36, 1};
constexpr NamItem kImsi1112Item = {16, 2};
constexpr NamItem kMccItem = {17, 3};
constexpr NamItem kPrimaryChannelsItem = {29, 5};
constexpr NamItem kSecondaryChannelsItem = {31, 5};
constexpr NamItem kVocoderItem = {30, 8};
constexpr NamItem kMccTItem = {20, 3};
constexpr NamItem kImsiT1112Item = {18, 2};
constexpr NamItem kOverloadClassItem = {2, 3};

// Offsets of the values in their items. All items but SCM and vocoder begin with the NAM index.
constexpr size_t kNamIndex = 0;
constexpr size_t kMdnCountAt = 1;
constexpr size_t kMdnDigitsAt = 2;
constexpr size_t kS1At = 5;  // u32 MIN1, IMSI_T_S1
constexpr size_t kS2At = 3;  // u16 MIN2, IMSI_T_S2
constexpr size_t kSidAt = 1;
constexpr size_t kNidAt = 3;
constexpr size_t kScmAt = 0;
constexpr size_t kMccAt = 1;
constexpr size_t k1112At = 1;
constexpr size_t kChannelAAt = 1;
constexpr size_t kChannelBAt = 3;
constexpr size_t kVocoderAt = 4;
constexpr size_t kOverloadClassAt = 2;

constexpr size_t kSidNidPairs = 20;

constexpr uint32_t kNamItemBufferSize = 1024;
using NamItemBuffer = uint8_t[kNamItemBufferSize];

// Zeroes the buffer, reads the item into it, and logs and returns the result (kRdeSuccess or
// kRdeFailure).
uint32_t read_nam_item(const NamItem& item, NamItemBuffer& buffer);

// Writes the item from the buffer, and logs and returns the result.
uint32_t write_nam_item(const NamItem& item, const NamItemBuffer& buffer);

// Convert the vocoder's code between the parent's record and the modem's item. Unknown codes become
// 0x8000 and 0xFFFFFFFF.
uint16_t vocoder_to_item(uint32_t host_code);
uint32_t vocoder_from_item(uint16_t item_value);

// The first failure among the results of a NAM exchange, with its number as the log shows it.
class FirstFailure {
 public:
  void note(uint32_t result) { note(next_++, result); }
  void note(int number, uint32_t result) {
    if (result_ != 0 || result == 0) return;
    number_ = number;
    result_ = result;
  }
  uint32_t result() const { return result_; }
  int number() const { return number_; }

 private:
  int next_ = 0;
  int number_ = 0;
  uint32_t result_ = 0;
};
