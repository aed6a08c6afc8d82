// SPDX-License-Identifier: Apache-2.0
// The NV items whose content is known. Items of the NAM begin with the NAM index, which is 0,
// except "scm" and "vocoder".
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "protocol/field.h"

namespace protocol {

struct NvItem {
  uint32_t id;  // RDE id
  const char* name;
  Layout layout;
  uint16_t size = 0;  // bytes that the modem keeps; 0: varies
};

namespace nv_item {

inline constexpr uint16_t kMdnDigits = 15;
inline constexpr uint16_t kPairCount = 20;
inline constexpr uint16_t kPairSize = 4;

inline constexpr Field kNam = u8("nam", 0);

inline constexpr Field kOverloadClass[] = {kNam, u8("overload-class", 2)};
inline constexpr Field kMdn[] = {kNam, u8("count", 1),
                                 personal(counted(dial("mdn", 2, kMdnDigits), "count"))};
inline constexpr Field kSidNid[] = {kNam};
inline constexpr Field kPair[] = {u16("sid", 0), u16("nid", 2)};
inline constexpr Group kPairs = {"pairs", 1, kPairSize, kPairCount, kPair};
inline constexpr Field kImsi1112[] = {kNam, personal(u8("imsi-11-12", 1))};
inline constexpr Field kImsiMcc[] = {kNam, personal(u16("imsi-mcc", 1))};
inline constexpr Field kImsiT1112[] = {kNam, personal(u8("imsi-t-11-12", 1))};
inline constexpr Field kImsiTMcc[] = {kNam, personal(u16("imsi-t-mcc", 1))};
inline constexpr Field kImsiTS1[] = {kNam, personal(u32("imsi-t-s1", 5))};
inline constexpr Field kImsiTS2[] = {kNam, personal(u16("imsi-t-s2", 3))};
inline constexpr Field kMin1[] = {kNam, personal(u32("min1", 5))};
inline constexpr Field kMin2[] = {kNam, personal(u16("min2", 3))};
inline constexpr Field kMobPRev[] = {u8("mob-p-rev", 0)};
inline constexpr Field kPrimary[] = {kNam, u16("primary-a", 1), u16("primary-b", 3)};
inline constexpr Field kVocoder[] = {u16("vocoder", 4)};
inline constexpr Field kSecondary[] = {kNam, u16("secondary-a", 1), u16("secondary-b", 3)};
inline constexpr Field kSpc[] = {personal(code("spc", 0))};
inline constexpr Field kScm[] = {u8("scm", 0)};
inline constexpr Field kImeiSv[] = {u8("imei-sv", 0)};
inline constexpr Field kLteBcConfig[] = {hex("lte-bc-config", 0)};
inline constexpr Field kVersion[] = {text("version", 0)};
inline constexpr Field kLteOption[] = {u8("lte-option", 0)};
inline constexpr Field kDdtm[] = {u8("ddtm", 0)};

}  // namespace nv_item

inline constexpr NvItem kNvItems[] = {
    {2, "overload-class", {nv_item::kOverloadClass}, 3},
    {8, "mdn", {nv_item::kMdn}, 17},
    {15, "sid-nid", {nv_item::kSidNid, 0, &nv_item::kPairs}, 81},
    {16, "imsi-11-12", {nv_item::kImsi1112}, 2},
    {17, "imsi-mcc", {nv_item::kImsiMcc}, 3},
    {18, "imsi-t-11-12", {nv_item::kImsiT1112}, 2},
    {20, "imsi-t-mcc", {nv_item::kImsiTMcc}, 3},
    {21, "imsi-t-s1", {nv_item::kImsiTS1}, 9},
    {22, "imsi-t-s2", {nv_item::kImsiTS2}, 5},
    {25, "min1", {nv_item::kMin1}, 9},
    {26, "min2", {nv_item::kMin2}, 5},
    {28, "mob-p-rev", {nv_item::kMobPRev}, 1},
    {29, "primary-channels", {nv_item::kPrimary}, 5},
    {30, "vocoder", {nv_item::kVocoder}, 8},
    {31, "secondary-channels", {nv_item::kSecondary}, 5},
    {32, "spc", {nv_item::kSpc}, 6},
    {36, "scm", {nv_item::kScm}, 1},
    {41, "imei-sv", {nv_item::kImeiSv}, 1},
    {53, "lte-bc-config", {nv_item::kLteBcConfig}, 8},
    {8028, "flex-version", {nv_item::kVersion}},
    {8029, "fsg-version", {nv_item::kVersion}},
    {10017, "lte-option", {nv_item::kLteOption}, 1},
    {10018, "ddtm", {nv_item::kDdtm}, 1},
};

// By name, at compile time: an unknown name does not compile.
consteval const NvItem& nv_item_named(std::string_view name) {
  for (const NvItem& item : kNvItems) {
    if (name == item.name) return item;
  }
  throw "no such item";
}

// The place of a number in an item. For a field of a group, the place in the first record.
struct NvNumber {
  uint32_t rde_id;
  uint16_t offset;
  uint16_t width;
  uint16_t item_size;
};
consteval NvNumber nv_number(std::string_view item_name, std::string_view field_name) {
  const NvItem& item = nv_item_named(item_name);
  auto in_item = [&](const Field& field, uint16_t start) {
    return NvNumber{item.id, static_cast<uint16_t>(start + field.offset),
                    static_cast<uint16_t>(width_of(field.type)), item.size};
  };
  for (const Field& field : item.layout.fields) {
    if (field_name == field.name) return in_item(field, 0);
  }
  const Group* group = item.layout.group;
  for (const Field& field : group ? group->fields : std::span<const Field>()) {
    if (field_name == field.name) return in_item(field, group->offset);
  }
  throw "no such field";
}
// For a field with the name of its item.
consteval NvNumber nv_number(std::string_view name) { return nv_number(name, name); }

// Null when the content is not known.
constexpr const NvItem* find_nv_item(uint32_t id) {
  for (const NvItem& item : kNvItems) {
    if (item.id == id) return &item;
  }
  return nullptr;
}

// Whether the item contains a personal value.
constexpr bool is_personal_item(uint32_t id) {
  const NvItem* item = find_nv_item(id);
  if (!item) return false;
  for (const Field& field : item->layout.fields) {
    if (field.privacy == Privacy::personal) return true;
  }
  return false;
}

}  // namespace protocol
