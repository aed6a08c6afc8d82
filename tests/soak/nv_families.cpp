// SPDX-License-Identifier: Apache-2.0
// NV items: by general requests, and by those with an item of their own.
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

Address draw_address(Draws& draws) {
  return {{kFirstItem + draws.below(kItems), draws.below(kRecordsOfItem)},
          draws.one_in(20) ? draws.below(600) : draws.below(40)};
}

// Most are short; some are around the limit.
uint32_t draw_length(Draws& draws) {
  return draws.one_in(20) ? draws.between(kMaxItemBytes - 2, kMaxItemBytes + 2) : draws.below(48);
}

Case general_read(Draws& draws, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000016;
  auto [key, offset] = draw_address(draws);
  Bytes request = cdma(kId, words({key.rde_id, key.record, offset, draws.below(8)}));
  auto [got, data] = modem.read_item(key, offset);
  if (got != Got::answer) return {request, reply(kId, 5)};
  auto size = static_cast<uint32_t>(data.size());
  return {request, reply(kId, 0, words({key.rde_id, key.record, offset, size}) + data + zeros(4))};
}

Case general_write(Draws& draws, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000015;
  auto [key, offset] = draw_address(draws);
  uint32_t length = draws.one_in(50) ? draws.word() | 0x80000000 : draw_length(draws);
  Bytes data = draws.bytes(std::min(length, kMaxItemBytes + 2));
  Bytes request = cdma(kId, words({key.rde_id, key.record, offset, length}) + data);
  bool done = length <= kMaxItemBytes && modem.write_item(key, offset, data);
  return {request, reply(kId, status_of(done))};
}

Case mobile_revision(Draws& /*draws*/, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000007;
  auto [got, data] = modem.read_item({28, 0});
  Bytes value = {got == Got::answer ? data[0] : uint8_t{0}};
  return {cdma(kId), reply(kId, status_of(got == Got::answer), value + zeros(3))};
}

// The item's first four bytes. That the modem refuses is not looked at.
Case fixed_read(uint32_t id, uint32_t item, ModemModel& modem) {
  auto [got, data] = modem.read_item({item, 0});
  if (got == Got::nothing) return {cdma(id), reply(id, 5)};
  data.resize(4);
  return {cdma(id), reply(id, 0, data)};
}

// Two items are read in vain: their replies carry no data.
Case useless_read(uint32_t id, uint32_t item, ModemModel& modem) {
  bool arrives = modem.read_item({item, 0}).got != Got::nothing;
  return {cdma(id), arrives ? reply(id, 5, zeros(4)) : reply(id, 5)};
}

Case fixed_write(uint32_t id, uint32_t item, Draws& draws, ModemModel& modem) {
  Bytes data = draws.bytes(draw_length(draws));
  bool done = data.size() <= kMaxItemBytes && modem.write_item({item, 0}, 0, data);
  return {cdma(id, data), reply(id, status_of(done))};
}

struct FixedItem {
  uint32_t read_id;
  uint32_t item;
  Case (*read)(uint32_t id, uint32_t item, ModemModel& modem);
};

constexpr FixedItem kFixedItems[] = {
    {0x02000017, 38, useless_read},
    {0x02000019, 39, useless_read},
    {0x0200000D, 10003, fixed_read},
    {0x0200000F, 37, fixed_read},
};

Case draw_fixed_read(Draws& draws, ModemModel& modem) {
  const auto& row = draws.one_of(kFixedItems);
  return row.read(row.read_id, row.item, modem);
}

Case draw_fixed_write(Draws& draws, ModemModel& modem) {
  if (draws.one_in(5)) return fixed_write(0x02000008, 28, draws, modem);
  const auto& row = draws.one_of(kFixedItems);
  return fixed_write(row.read_id + 1, row.item, draws, modem);
}

constexpr Family kNvFamilies[] = {
    {"general NV read", 8, general_read, {{"element_read"}}},
    {"general NV write", 8, general_write, {{"element_write"}}},
    {"mobile revision", 2, mobile_revision, {{"element_read"}}},
    {"fixed NV read", 6, draw_fixed_read, {{"element_read"}}},
    {"fixed NV write", 6, draw_fixed_write, {{"element_write"}}},
};

}  // namespace

std::span<const Family> nv_families() { return kNvFamilies; }

}  // namespace soak
