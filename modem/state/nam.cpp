// SPDX-License-Identifier: Apache-2.0
#include "modem/state/nam.h"

#include <string.h>

#include <algorithm>
#include <array>

#include "protocol/cdma_digits.h"
#include "protocol/nv_items.h"

namespace modem {
namespace {

using protocol::decode_digits;
using protocol::encode_digits;
using protocol::nv_item_named;
using protocol::nv_number;
using protocol::NvNumber;

constexpr NvNumber kMin1 = nv_number("min1");
constexpr NvNumber kMin2 = nv_number("min2");
constexpr NvNumber kImsiTS1 = nv_number("imsi-t-s1");
constexpr NvNumber kImsiTS2 = nv_number("imsi-t-s2");
constexpr NvNumber kHomeSid = nv_number("sid-nid", "sid");
constexpr NvNumber kHomeNid = nv_number("sid-nid", "nid");
constexpr NvNumber kScm = nv_number("scm");
constexpr NvNumber kImsi1112 = nv_number("imsi-11-12");
constexpr NvNumber kImsiMcc = nv_number("imsi-mcc");
constexpr NvNumber kPrimaryA = nv_number("primary-channels", "primary-a");
constexpr NvNumber kPrimaryB = nv_number("primary-channels", "primary-b");
constexpr NvNumber kSecondaryA = nv_number("secondary-channels", "secondary-a");
constexpr NvNumber kSecondaryB = nv_number("secondary-channels", "secondary-b");
constexpr NvNumber kVocoder = nv_number("vocoder");
constexpr NvNumber kImsiTMcc = nv_number("imsi-t-mcc");
constexpr NvNumber kImsiT1112 = nv_number("imsi-t-11-12");
constexpr NvNumber kOverloadClass = nv_number("overload-class");
constexpr NvNumber kMobPRev = nv_number("mob-p-rev");
constexpr NvNumber kLteOption = nv_number("lte-option");
constexpr NvNumber kDdtm = nv_number("ddtm");
constexpr NvNumber kImeiSv = nv_number("imei-sv");
// The item's first number; its other bytes are zero.
constexpr protocol::NvItem kLteBcConfigItem = nv_item_named("lte-bc-config");
constexpr NvNumber kLteBcConfig = {kLteBcConfigItem.id, 0, sizeof(uint32_t), kLteBcConfigItem.size};

constexpr NvKey kMdnItem{nv_item_named("mdn").id};
constexpr size_t kMdnHead = nv_item_named("mdn").size - kMdnDigits;
constexpr NvKey kFsgVersionItem{nv_item_named("fsg-version").id};
constexpr NvKey kFlexVersionItem{nv_item_named("flex-version").id};

constexpr size_t kAreaDigits = 3;

uint32_t load(const NvStore& nv, const NvNumber& place) {
  const Bytes* item = nv.find({place.rde_id});
  uint32_t value = 0;
  if (item != nullptr && item->size() >= size_t{place.offset} + place.width) {
    memcpy(&value, item->data() + place.offset, place.width);
  }
  return value;
}

void store(NvStore& nv, const NvNumber& place, uint32_t value) {
  std::array<uint8_t, sizeof value> bytes{};
  memcpy(bytes.data(), &value, sizeof value);
  nv.write({place.rde_id}, place.offset, std::span(bytes).first(place.width));
  nv.write({place.rde_id}, place.item_size, {});
}

template <typename T>
void load_number(const NvStore& nv, const NvNumber& place, T& value) {
  value = static_cast<T>(load(nv, place));
}

std::string load_mdn(const NvStore& nv) {
  const Bytes* item = nv.find(kMdnItem);
  std::string mdn;
  if (item == nullptr || item->size() < kMdnHead) return mdn;
  size_t count = std::min<size_t>({(*item)[1], kMdnDigits, item->size() - kMdnHead});
  for (size_t i = 0; i < count; ++i) mdn += protocol::decode_digit((*item)[kMdnHead + i]);
  return mdn;
}

void store_mdn(NvStore& nv, const std::string& mdn) {
  Bytes item(kMdnHead + kMdnDigits);
  item[1] = static_cast<uint8_t>(mdn.size());
  std::transform(mdn.begin(), mdn.end(), item.begin() + kMdnHead, protocol::encode_digit);
  nv.put(kMdnItem, item);
}

std::string load_ten_digits(const NvStore& nv, const NvNumber& seven, const NvNumber& area) {
  return decode_digits(load(nv, area), kAreaDigits) +
         protocol::decode_seven_digits(load(nv, seven));
}

void store_ten_digits(NvStore& nv, const NvNumber& seven, const NvNumber& area,
                      std::string_view digits) {
  store(nv, area, encode_digits(digits.substr(0, kAreaDigits)));
  store(nv, seven, protocol::encode_seven_digits(digits.substr(kAreaDigits)));
}

std::string load_text(const NvStore& nv, NvKey key) {
  const Bytes* item = nv.find(key);
  return item == nullptr ? ""
                         : std::string(item->begin(), std::find(item->begin(), item->end(), 0));
}

void store_text(NvStore& nv, NvKey key, const std::string& text) {
  Bytes item(text.begin(), text.end());
  item.push_back(0);
  nv.put(key, item);
}

}  // namespace

Nam load_nam(const NvStore& nv) {
  Nam nam;
  nam.mdn = load_mdn(nv);
  nam.min = load_ten_digits(nv, kMin1, kMin2);
  nam.imsi_mcc = decode_digits(load(nv, kImsiMcc), 3);
  nam.imsi_11_12 = decode_digits(load(nv, kImsi1112), 2);
  nam.imsi_t = decode_digits(load(nv, kImsiTMcc), 3) + decode_digits(load(nv, kImsiT1112), 2) +
               load_ten_digits(nv, kImsiTS1, kImsiTS2);
  load_number(nv, kHomeSid, nam.home_sid);
  load_number(nv, kHomeNid, nam.home_nid);
  load_number(nv, kScm, nam.scm);
  load_number(nv, kPrimaryA, nam.primary_channel_a);
  load_number(nv, kPrimaryB, nam.primary_channel_b);
  load_number(nv, kSecondaryA, nam.secondary_channel_a);
  load_number(nv, kSecondaryB, nam.secondary_channel_b);
  load_number(nv, kVocoder, nam.vocoder);
  load_number(nv, kOverloadClass, nam.overload_class);
  return nam;
}

void store_nam(NvStore& nv, const Nam& nam) {
  std::string_view imsi_t = nam.imsi_t;
  store_mdn(nv, nam.mdn);
  store_ten_digits(nv, kMin1, kMin2, nam.min);
  store(nv, kImsiMcc, encode_digits(nam.imsi_mcc));
  store(nv, kImsi1112, encode_digits(nam.imsi_11_12));
  store(nv, kImsiTMcc, encode_digits(imsi_t.substr(0, 3)));
  store(nv, kImsiT1112, encode_digits(imsi_t.substr(3, 2)));
  store_ten_digits(nv, kImsiTS1, kImsiTS2, imsi_t.substr(5));
  store(nv, kHomeSid, nam.home_sid);
  store(nv, kHomeNid, nam.home_nid);
  store(nv, kScm, nam.scm);
  store(nv, kPrimaryA, nam.primary_channel_a);
  store(nv, kPrimaryB, nam.primary_channel_b);
  store(nv, kSecondaryA, nam.secondary_channel_a);
  store(nv, kSecondaryB, nam.secondary_channel_b);
  store(nv, kVocoder, nam.vocoder);
  store(nv, kOverloadClass, nam.overload_class);
}

Settings load_settings(const NvStore& nv) {
  Settings settings;
  settings.spc = load_text(nv, kSpcItem);
  load_number(nv, kMobPRev, settings.mob_p_rev);
  load_number(nv, kLteOption, settings.lte_option);
  load_number(nv, kDdtm, settings.ddtm);
  load_number(nv, kImeiSv, settings.imei_sv);
  load_number(nv, kLteBcConfig, settings.lte_bc_config);
  settings.fsg_version = load_text(nv, kFsgVersionItem);
  settings.flex_version = load_text(nv, kFlexVersionItem);
  return settings;
}

void store_settings(NvStore& nv, const Settings& settings) {
  nv.put(kSpcItem, Bytes(settings.spc.begin(), settings.spc.end()));
  store(nv, kMobPRev, settings.mob_p_rev);
  store(nv, kLteOption, settings.lte_option);
  store(nv, kDdtm, settings.ddtm);
  store(nv, kImeiSv, settings.imei_sv);
  store(nv, kLteBcConfig, settings.lte_bc_config);
  store_text(nv, kFsgVersionItem, settings.fsg_version);
  store_text(nv, kFlexVersionItem, settings.flex_version);
}

}  // namespace modem
