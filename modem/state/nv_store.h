// SPDX-License-Identifier: Apache-2.0
// The modem's NV items: bytes by RDE index and record number.
#pragma once

#include <stdint.h>

#include <compare>
#include <map>
#include <span>

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
  // Null for an item that was never written.
  const Bytes* find(NvKey key) const;

  // Replaces the whole item.
  void put(NvKey key, Bytes data);
  void erase(NvKey key) { items_.erase(key); }

  // Writes into the item at `offset`, filling up a gap before it with zeros; an item that is not
  // there yet is made. False, with nothing written, when it would grow above kMaxItemSize.
  bool write(NvKey key, uint32_t offset, std::span<const uint8_t> data);

  const std::map<NvKey, Bytes>& items() const { return items_; }

 private:
  std::map<NvKey, Bytes> items_;
};

}  // namespace modem
