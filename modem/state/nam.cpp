// SPDX-License-Identifier: Apache-2.0
#include "modem/state/nam.h"

#include <string.h>

#include <algorithm>
#include <array>

#include "modem/state/nam_encoding.h"

namespace modem {
namespace {

// Where a number lies in an item, and how long the item is.
struct Place {
  uint32_t rde_id;
  uint16_t offset;
  uint8_t width;
  uint16_t item_size;
};

constexpr Place kMin1 = {25, 5, 4, 9};
constexpr Place kMin2 = {26, 3, 2, 5};
constexpr Place kImsiTS1 = {21, 5, 4, 9};
constexpr Place kImsiTS2 = {22, 3, 2, 5};
constexpr Place kHomeSid = {15, 1, 2, 81};
constexpr Place kHomeNid = {15, 3, 2, 81};
constexpr Place kScm = {36, 0, 1, 1};
constexpr Place kImsi1112 = {16, 1, 1, 2};
constexpr Place kImsiMcc = {17, 1, 2, 3};
constexpr Place kPrimaryA = {29, 1, 2, 5};
constexpr Place kPrimaryB = {29, 3, 2, 5};
constexpr Place kSecondaryA = {31, 1, 2, 5};
constexpr Place kSecondaryB = {31, 3, 2, 5};
constexpr Place kVocoder = {30, 4, 2, 8};
constexpr Place kImsiTMcc = {20, 1, 2, 3};
constexpr Place kImsiT1112 = {18, 1, 1, 2};
constexpr Place kOverloadClass = {2, 2, 1, 3};
constexpr Place kMobPRev = {28, 0, 1, 1};
constexpr Place kLteOption = {10017, 0, 1, 1};
constexpr Place kDdtm = {10018, 0, 1, 1};
constexpr Place kImeiSv = {41, 0, 1, 1};
constexpr Place kLteBands = {53, 0, 4, 8};

constexpr NvKey kMdnItem{8};
constexpr size_t kMdnHead = 2;  // the NAM and the number of digits
constexpr NvKey kFsgVersionItem{8029};
constexpr NvKey kFlexVersionItem{8028};

constexpr size_t kAreaDigits = 3;

uint32_t load(const NvStore& nv, const Place& place) {
  const Bytes* item = nv.find({place.rde_id});
  uint32_t value = 0;
  if (item != nullptr && item->size() >= size_t{place.offset} + place.width) {
    memcpy(&value, item->data() + place.offset, place.width);
  }
  return value;
}

void store(NvStore& nv, const Place& place, uint32_t value) {
  std::array<uint8_t, sizeof value> bytes{};
  memcpy(bytes.data(), &value, sizeof value);
  nv.write({place.rde_id}, place.offset, std::span(bytes).first(place.width));
  nv.write({place.rde_id}, place.item_size, {});
}

template <typename T>
void load_number(const NvStore& nv, const Place& place, T& value) {
  value = static_cast<T>(load(nv, place));
}

std::string load_mdn(const NvStore& nv) {
  const Bytes* item = nv.find(kMdnItem);
  std::string mdn;
  if (item == nullptr || item->size() < kMdnHead) return mdn;
  size_t count = std::min<size_t>({(*item)[1], kMdnDigits, item->size() - kMdnHead});
  for (size_t i = 0; i < count; ++i) mdn += decode_digit((*item)[kMdnHead + i]);
  return mdn;
}

void store_mdn(NvStore& nv, const std::string& mdn) {
  Bytes item(kMdnHead + kMdnDigits);
  item[1] = static_cast<uint8_t>(mdn.size());
  std::transform(mdn.begin(), mdn.end(), item.begin() + kMdnHead, encode_digit);
  nv.put(kMdnItem, item);
}

std::string load_ten_digits(const NvStore& nv, const Place& seven, const Place& area) {
  return decode_digits(load(nv, area), kAreaDigits) + decode_seven_digits(load(nv, seven));
}

void store_ten_digits(NvStore& nv, const Place& seven, const Place& area, std::string_view digits) {
  store(nv, area, encode_digits(digits.substr(0, kAreaDigits)));
  store(nv, seven, encode_seven_digits(digits.substr(kAreaDigits)));
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
  load_number(nv, kLteBands, settings.lte_bands);
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
  store(nv, kLteBands, settings.lte_bands);
  store_text(nv, kFsgVersionItem, settings.fsg_version);
  store_text(nv, kFlexVersionItem, settings.flex_version);
}

}  // namespace modem
