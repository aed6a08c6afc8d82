// SPDX-License-Identifier: Apache-2.0
// The NV items whose content is known.
#pragma once

#include <cstdint>

#include "protocol/request.h"

namespace protocol {

struct NvItem {
  uint32_t id;  // RDE id
  const char* name;
  Layout layout;
};

std::span<const NvItem> known_nv_items();

// Null when the content is not known.
const NvItem* find_nv_item(uint32_t id);

// Of the numbers and codes named in personal.h.
bool is_personal_item(uint32_t id);

}  // namespace protocol
