// SPDX-License-Identifier: Apache-2.0
// The number assignment module: the record that the parent sees, and the modem's items that keep
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
  uint8_t not_used[2];
};
static_assert(sizeof(NamRecord) == 104);
static_assert(offsetof(NamRecord, hSid) == 32);
static_assert(offsetof(NamRecord, imsi_11_12) == 44);
static_assert(offsetof(NamRecord, pCdmaA) == 52);
static_assert(offsetof(NamRecord, vocoder) == 68);
static_assert(offsetof(NamRecord, imsiT) == 76);
static_assert(offsetof(NamRecord, access_overload) == 92);
static_assert(offsetof(NamRecord, new_spc) == 96);

constexpr uint32_t kMdnDigits = 15;
constexpr size_t kAreaDigits = 3;  // of a MIN, in front of its seven others
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

// Where the values lie in their items. All items but SCM and vocoder begin with the NAM index.
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

// Zeroes the buffer, reads the item into it and logs the result (kRdeSuccess or kRdeFailure), which
// is returned.
uint32_t read_nam_item(const NamItem& item, NamItemBuffer& buffer);

// Writes the item from the buffer and logs the result, which is returned.
uint32_t write_nam_item(const NamItem& item, const NamItemBuffer& buffer);

// The vocoder's code in the modem's item for the parent's, and back; unknown codes become 0x8000
// and 0xFFFFFFFF.
uint16_t vocoder_to_item(uint32_t host_code);
uint32_t vocoder_from_item(uint16_t item_value);

// The first failure among the results of a NAM exchange, by the number that the log knows it under.
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
