// SPDX-License-Identifier: Apache-2.0
// NV items, by number and through requests for one item.
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

constexpr uint32_t kFirstItem = 7000;
constexpr uint32_t kItems = 8;
constexpr uint32_t kRecordsOfItem = 2;

struct Address {
  ItemKey key;
  uint32_t offset;
};

Address random_address(Random& random) {
  return {{kFirstItem + random.below(kItems), random.below(kRecordsOfItem)},
          random.one_in(20) ? random.below(600) : random.below(40)};
}

// Mostly short; sometimes near the limit.
uint32_t random_length(Random& random) {
  return random.one_in(20) ? random.between(kMaxItemBytes - 2, kMaxItemBytes + 2)
                           : random.below(48);
}

Case general_read(Random& random, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000016;
  auto [key, offset] = random_address(random);
  Bytes request = cdma(kId, words({key.rde_id, key.record, offset, random.below(8)}));
  auto [got, data] = modem.read_item(key, offset);
  if (got != Got::answer) return {request, reply(kId, 5)};
  auto size = static_cast<uint32_t>(data.size());
  return {request, reply(kId, 0, words({key.rde_id, key.record, offset, size}) + data + zeros(4))};
}

Case general_write(Random& random, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000015;
  auto [key, offset] = random_address(random);
  uint32_t length = random.one_in(50) ? random.word() | 0x80000000 : random_length(random);
  Bytes data = random.bytes(std::min(length, kMaxItemBytes + 2));
  Bytes request = cdma(kId, words({key.rde_id, key.record, offset, length}) + data);
  bool done = length <= kMaxItemBytes && modem.write_item(key, offset, data);
  return {request, reply(kId, status_of(done))};
}

Case mobile_revision(Random& /*random*/, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000007;
  auto [got, data] = modem.read_item({28, 0});
  Bytes value = {got == Got::answer ? data[0] : uint8_t{0}};
  return {cdma(kId), reply(kId, status_of(got == Got::answer), value + zeros(3))};
}

// Returns the item's first four bytes. The daemon does not check whether the modem refuses.
Case fixed_read(uint32_t id, uint32_t item, ModemModel& modem) {
  auto [got, data] = modem.read_item({item, 0});
  if (got == Got::nothing) return {cdma(id), reply(id, 5)};
  data.resize(4);
  return {cdma(id), reply(id, 0, data)};
}

// Two items are read but never returned.
Case discarded_read(uint32_t id, uint32_t item, ModemModel& modem) {
  bool arrives = modem.read_item({item, 0}).got != Got::nothing;
  return {cdma(id), arrives ? reply(id, 5, zeros(4)) : reply(id, 5)};
}

Case fixed_write(uint32_t id, uint32_t item, Random& random, ModemModel& modem) {
  Bytes data = random.bytes(random_length(random));
  bool done = data.size() <= kMaxItemBytes && modem.write_item({item, 0}, 0, data);
  return {cdma(id, data), reply(id, status_of(done))};
}

struct FixedItem {
  uint32_t read_id;
  uint32_t item;
  Case (*read)(uint32_t id, uint32_t item, ModemModel& modem);
};

constexpr FixedItem kFixedItems[] = {
    {0x02000017, 38, discarded_read},
    {0x02000019, 39, discarded_read},
    {0x0200000D, 10003, fixed_read},
    {0x0200000F, 37, fixed_read},
};

Case random_fixed_read(Random& random, ModemModel& modem) {
  const auto& row = random.one_of(kFixedItems);
  return row.read(row.read_id, row.item, modem);
}

Case random_fixed_write(Random& random, ModemModel& modem) {
  if (random.one_in(5)) return fixed_write(0x02000008, 28, random, modem);
  const auto& row = random.one_of(kFixedItems);
  return fixed_write(row.read_id + 1, row.item, random, modem);
}

constexpr Family kNvFamilies[] = {
    {"general NV read", 8, general_read, {{"element_read"}}},
    {"general NV write", 8, general_write, {{"element_write"}}},
    {"mobile revision", 2, mobile_revision, {{"element_read"}}},
    {"fixed NV read", 6, random_fixed_read, {{"element_read"}}},
    {"fixed NV write", 6, random_fixed_write, {{"element_write"}}},
};

}  // namespace

std::span<const Family> nv_families() { return kNvFamilies; }

}  // namespace soak
