// SPDX-License-Identifier: Apache-2.0
// NAM records in the parent's format.
#pragma once

#include "tests/e2e/support/handset_fixture.h"

namespace e2e {

constexpr uint32_t kNamGet = 0x02000001;
constexpr uint32_t kNamSet = 0x02000002;

struct Record {
  std::string mdn;
  std::string min;
  uint32_t sid;
  uint32_t nid;
  uint32_t scm;
  std::string imsi_11_12;
  std::string mcc;
  uint32_t primary_a;
  uint32_t primary_b;
  uint32_t secondary_a;
  uint32_t secondary_b;
  uint32_t vocoder;
  std::string mcc_t;
  std::string imsi_t;
  uint32_t overload_class;
};

inline const Record kFactory = {.mdn = "9135550142",
                                .min = "9135550142",
                                .sid = 4700,
                                .nid = 12,
                                .scm = 0x2A,
                                .imsi_11_12 = "00",
                                .mcc = "310",
                                .primary_a = 283,
                                .primary_b = 384,
                                .secondary_a = 691,
                                .secondary_b = 777,
                                .vocoder = 6,
                                .mcc_t = "310",
                                .imsi_t = "310009135550142",
                                .overload_class = 2};

inline const Record kProgrammed = {.mdn = "206070809012345",
                                   .min = "2060708090",
                                   .sid = 0x1234,
                                   .nid = 0xFFFF,
                                   .scm = 0x6A,
                                   .imsi_11_12 = "19",
                                   .mcc = "207",
                                   .primary_a = 600,
                                   .primary_b = 601,
                                   .secondary_a = 602,
                                   .secondary_b = 603,
                                   .vocoder = 2,
                                   .mcc_t = "460",
                                   .imsi_t = "460031234567890",
                                   .overload_class = 9};

inline Bytes record_bytes(const Record& record, const std::string& new_spc = "") {
  return padded(record.mdn, 16) + padded(record.min, 16) +
         words({record.sid, record.nid, record.scm}) + padded(record.imsi_11_12, 4) +
         padded(record.mcc, 4) +
         words({record.primary_a, record.primary_b, record.secondary_a, record.secondary_b,
                record.vocoder}) +
         padded(record.mcc_t, 4) + padded(record.imsi_t, 16) + le32(record.overload_class) +
         padded(new_spc, 6) + zeros(2);
}

class NamProgramming : public HandsetTest {
 protected:
  static Bytes setting(const Record& record, const std::string& spc, const std::string& new_spc) {
    return cdma(kNamSet, record_bytes(record, new_spc), spc);
  }
  std::string get() { return handset.serve(cdma(kNamGet)).replies; }
  // The NV items written since the last call.
  Texts written() {
    Texts requests = handset.modem_requests();
    std::erase_if(requests, [](const std::string& request) {
      return request.find("element_write") == std::string::npos;
    });
    return requests;
  }
};

}  // namespace e2e
