// SPDX-License-Identifier: Apache-2.0
// A phone whose modem has a number assignment module, for tests of reading and writing it.
#pragma once

#include "tests/unit/product/carrier_phone.h"

// The items in the order of both requests; a failure is logged with the position of its item.
inline constexpr uint32_t kNamItems[] = {8, 25, 26, 21, 22, 15, 36, 16, 17, 29, 31, 30, 20, 18, 2};

// The parent's record; all values are different.
struct Nam {
  std::string mdn = "206555019800001";
  std::string min = "2065551234";
  uint32_t sid = 4183;
  uint32_t nid = 65534;
  uint32_t scm = 42;
  std::string imsi_11_12 = "48";
  std::string mcc = "311";
  uint32_t primary_a = 283;
  uint32_t primary_b = 384;
  uint32_t secondary_a = 691;
  uint32_t secondary_b = 777;
  uint32_t vocoder = 2;
  std::string mcc_t = "310";
  std::string imsi_t = "310120065551239";
  uint32_t overload_class = 7;
  std::string new_spc = std::string(6, '\0');

  Bytes record() const {
    return field(mdn, 16) + field(min, 16) + le32(sid) + le32(nid) + le32(scm) +
           field(imsi_11_12, 4) + field(mcc, 4) + le32(primary_a) + le32(primary_b) +
           le32(secondary_a) + le32(secondary_b) + le32(vocoder) + field(mcc_t, 4) +
           field(imsi_t, 16) + le32(overload_class) + field(new_spc, 6) + Bytes(2);
  }

 private:
  static Bytes field(const std::string& characters, size_t size) {
    Bytes bytes = text(characters);
    bytes.resize(size);
    return bytes;
  }
};

class NamPhone : public CarrierPhone {
 protected:
  // The items of the record above, with distinct bytes around their values.
  NamPhone() {
    items = {{8, from_hex("00 0F 02 0A 06 05 05 05 0A 01 09 08 0A 0A 0A 0A 01")},
             {25, from_hex("00 A1A2A3A4") + le32((444 << 14) | (1 << 10) | 123)},
             {26, from_hex("00 B1B2") + le16(195)},
             {21, from_hex("00 C1C2C3C4") + le32((444 << 14) | (1 << 10) | 128)},
             {22, from_hex("00 D1D2") + le16(995)},
             {15, Bytes{0} + le16(4183) + le16(65534) + numbered(76)},
             {36, {42}},
             {16, {0, 37}},
             {17, Bytes{0} + le16(200)},
             {29, Bytes{0} + le16(283) + le16(384)},
             {31, Bytes{0} + le16(691) + le16(777)},
             {30, from_hex("E0E1E2E3 1C80 E6E7")},
             {20, Bytes{0} + le16(209)},
             {18, {0, 1}},
             {2, from_hex("00 F1 07")}};
  }
};

// The programming code in set requests.
inline const std::string kNamCode = "123456";

// The same for set requests; `nam` is their record.
class NamWrite : public NamPhone {
 protected:
  Nam nam;

  NamWrite() { nam.new_spc = kNamCode; }

  uint32_t set(uint32_t status = 0, const std::string& code = kNamCode) {
    return set_record(nam.record(), status, code);
  }

  uint32_t set_record(const Bytes& record, uint32_t status = 0,
                      const std::string& code = kNamCode) {
    uint32_t result = offer(Request::cdma(0x02000002, record).with_code(code));
    EXPECT_THAT(replies(),
                testing::ElementsAre(own_header_reply(0x02000002, status, code, record)));
    return result;
  }

  std::string written(uint32_t item) const {
    for (const Write& write : writes()) {
      if (write.item == item) return write.data;
    }
    return "nothing";
  }

  bool is_code_changed() const {
    for (const Exchange& exchange : exchanges) {
      if (exchange.service == "dms") return true;
    }
    return false;
  }
};
