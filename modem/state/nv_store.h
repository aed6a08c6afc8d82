// SPDX-License-Identifier: Apache-2.0
// The modem's NV items: bytes by RDE index and record number.
#pragma once

#include <stdint.h>

#include <algorithm>
#include <compare>
#include <map>
#include <span>
#include <utility>

#include "platform/linux/qmi_json/hex.h"

namespace modem {

using qmi_json::Bytes;

constexpr size_t kMaxItemSize = 512;

struct NvKey {
  uint32_t rde_id = 0;
  uint32_t record = 0;

  auto operator<=>(const NvKey&) const = default;
};

class NvStore {
 public:
  // Null for an item that does not exist.
  const Bytes* find(NvKey key) const {
    auto found = items_.find(key);
    return found == items_.end() ? nullptr : &found->second;
  }

  // Replaces the whole item.
  void put(NvKey key, Bytes data) { items_[key] = std::move(data); }
  void erase(NvKey key) { items_.erase(key); }

  // Writes into the item at `offset` and fills a gap before it with zeros. Creates the item if
  // necessary. Returns false and writes nothing if it would exceed kMaxItemSize.
  bool write(NvKey key, uint32_t offset, std::span<const uint8_t> data) {
    if (offset > kMaxItemSize || data.size() > kMaxItemSize - offset) return false;
    Bytes& item = items_[key];
    item.resize(std::max<size_t>(item.size(), offset + data.size()));
    std::copy(data.begin(), data.end(), item.begin() + offset);
    return true;
  }

  const std::map<NvKey, Bytes>& items() const { return items_; }

 private:
  std::map<NvKey, Bytes> items_;
};

}  // namespace modem
