// SPDX-License-Identifier: Apache-2.0
#include "protocol/nv_items.h"

#include <algorithm>

namespace protocol {

const NvItem* find_nv_item(uint32_t id) {
  for (const NvItem& item : kNvItems) {
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
