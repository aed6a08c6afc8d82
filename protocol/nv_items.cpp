// SPDX-License-Identifier: Apache-2.0
#include "protocol/nv_items.h"

#include <algorithm>

namespace protocol {

namespace nv_item {

constexpr uint16_t kMdnDigits = 15;
constexpr uint16_t kPairCount = 20;
constexpr uint16_t kPairSize = 4;

constexpr Field kNam = u8("nam", 0);

constexpr Field kOverloadClass[] = {kNam, u8("overload-class", 2)};
constexpr Field kMdn[] = {kNam, u8("count", 1),
                          personal(counted(dial("mdn", 2, kMdnDigits), "count"))};
constexpr Field kSidNid[] = {kNam};
constexpr Field kPair[] = {u16("sid", 0), u16("nid", 2)};
constexpr Group kPairs = {"pairs", 1, kPairSize, kPairCount, kPair};
constexpr Field kImsi1112[] = {kNam, personal(u8("imsi-11-12", 1))};
constexpr Field kImsiMcc[] = {kNam, personal(u16("imsi-mcc", 1))};
constexpr Field kImsiT1112[] = {kNam, personal(u8("imsi-t-11-12", 1))};
constexpr Field kImsiTMcc[] = {kNam, personal(u16("imsi-t-mcc", 1))};
constexpr Field kImsiTS1[] = {kNam, personal(u32("imsi-t-s1", 5))};
constexpr Field kImsiTS2[] = {kNam, personal(u16("imsi-t-s2", 3))};
constexpr Field kMin1[] = {kNam, personal(u32("min1", 5))};
constexpr Field kMin2[] = {kNam, personal(u16("min2", 3))};
constexpr Field kMobPRev[] = {u8("mob-p-rev", 0)};
constexpr Field kPrimary[] = {kNam, u16("primary-a", 1), u16("primary-b", 3)};
constexpr Field kVocoder[] = {u16("vocoder", 4)};
constexpr Field kSecondary[] = {kNam, u16("secondary-a", 1), u16("secondary-b", 3)};
constexpr Field kSpc[] = {personal(code("spc", 0))};
constexpr Field kScm[] = {u8("scm", 0)};
constexpr Field kImeiSv[] = {u8("imei-sv", 0)};
constexpr Field kLteBands[] = {hex("bands", 0)};
constexpr Field kVersion[] = {text("version", 0)};
constexpr Field kLteOption[] = {u8("lte-option", 0)};
constexpr Field kDdtm[] = {u8("ddtm", 0)};

constexpr NvItem kItems[] = {
    {2, "overload-class", {kOverloadClass}},
    {8, "mdn", {kMdn}},
    {15, "sid-nid", {kSidNid, 0, &kPairs}},
    {16, "imsi-11-12", {kImsi1112}},
    {17, "imsi-mcc", {kImsiMcc}},
    {18, "imsi-t-11-12", {kImsiT1112}},
    {20, "imsi-t-mcc", {kImsiTMcc}},
    {21, "imsi-t-s1", {kImsiTS1}},
    {22, "imsi-t-s2", {kImsiTS2}},
    {25, "min1", {kMin1}},
    {26, "min2", {kMin2}},
    {28, "mob-p-rev", {kMobPRev}},
    {29, "primary-channels", {kPrimary}},
    {30, "vocoder", {kVocoder}},
    {31, "secondary-channels", {kSecondary}},
    {32, "spc", {kSpc}},
    {36, "scm", {kScm}},
    {41, "imei-sv", {kImeiSv}},
    {53, "lte-bands", {kLteBands}},
    {8028, "flex-version", {kVersion}},
    {8029, "fsg-version", {kVersion}},
    {10017, "lte-option", {kLteOption}},
    {10018, "ddtm", {kDdtm}},
};

}  // namespace nv_item

std::span<const NvItem> known_nv_items() { return nv_item::kItems; }

const NvItem* find_nv_item(uint32_t id) {
  for (const NvItem& item : nv_item::kItems) {
    if (item.id == id) return &item;
  }
  return nullptr;
}

bool is_personal_item(uint32_t id) {
  const NvItem* item = find_nv_item(id);
  if (!item) return false;
  const auto& fields = item->layout.fields;
  return std::any_of(fields.begin(), fields.end(),
                     [](const Field& field) { return field.privacy == Privacy::personal; });
}

}  // namespace protocol
