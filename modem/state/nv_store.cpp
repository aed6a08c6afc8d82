// SPDX-License-Identifier: Apache-2.0
#include "modem/state/nv_store.h"

#include <algorithm>
#include <utility>

namespace modem {

const Bytes* NvStore::find(NvKey key) const {
  auto found = items_.find(key);
  return found == items_.end() ? nullptr : &found->second;
}

void NvStore::put(NvKey key, Bytes data) { items_[key] = std::move(data); }

bool NvStore::write(NvKey key, uint32_t offset, std::span<const uint8_t> data) {
  if (offset > kMaxItemSize || data.size() > kMaxItemSize - offset) return false;

  Bytes& item = items_[key];
  item.resize(std::max(item.size(), offset + data.size()));
  std::copy(data.begin(), data.end(), item.begin() + offset);
  return true;
}

}  // namespace modem
