// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/reports.h"

#include <fmt/format.h>

namespace soak {

namespace {

using namespace e2e;

constexpr size_t kMaxUtilityData = 512;

// The fields of the indication, in the words of the modem's control socket.
using Draw = std::string (*)(Draws& draws, uint32_t count, Parent& parent);

void expect(Parent& parent, uint32_t count, const Bytes& message) {
  parent.messages.insert(parent.messages.end(), count, message);
}

std::string notify(Draws& /*draws*/, uint32_t count, Parent& parent) {
  for (uint32_t i = 0; i < count; ++i) {
    std::string text = fmt::format("UNSOLNOTIFY9876-{}", parent.next_notification++);
    expect(parent, 1, cdma_message(1111, padded(text.substr(0, 20), 22)));
  }
  return "";
}

std::string generic_report(Draws& /*draws*/, uint32_t count, Parent& parent) {
  expect(parent, count, generic_message(hex("00020006"), {}));
  return "";
}

struct ForwardedType {
  uint32_t type;
  const char* id;
  const char* front;  // before the data
  bool is_one_byte;
};

constexpr ForwardedType kForwardedTypes[] = {
    {0, "000B0003", "02", false}, {2, "000C0004", "", false}, {3, "000E0004", "", false},
    {5, "00120004", "", false},   {6, "00130004", "", false}, {9, "00150004", "", true},
};

std::string utility_fields(uint32_t type, const Bytes& data) {
  return fmt::format("type={} data={}", type, as_hex(data));
}

std::string forwarded(Draws& draws, uint32_t count, Parent& parent) {
  const auto& row = draws.one_of(kForwardedTypes);
  Bytes data = draws.bytes(draws.one_in(20) ? draws.below(kMaxUtilityData + 1) : draws.below(40));
  Bytes shown = data;
  if (row.is_one_byte) shown.resize(1);
  expect(parent, count, generic_message(hex(row.id), hex(row.front) + shown));
  return utility_fields(row.type, data);
}

// One byte tells whether the cable is there; another number of bytes tells nothing.
std::string cable(Draws& draws, uint32_t /*count*/, Parent& parent) {
  Bytes data = draws.one_in(4) ? draws.bytes(draws.below(3))
                               : Bytes{draws.one_in(2) ? uint8_t{0} : draws.byte()};
  if (data.size() == 1) parent.cable_status = data[0] != 0 ? "1" : "0";
  return utility_fields(7, data);
}

std::string unknown_utility(Draws& draws, uint32_t /*count*/, Parent& /*parent*/) {
  return utility_fields(draws.between(10, 1000), draws.bytes(draws.below(40)));
}

std::string carrier_event(Draws& draws, uint32_t count, Parent& parent) {
  auto value = static_cast<uint16_t>(draws.word());
  expect(parent, count, cdma_message(0x020001B0, le32(value)));
  return fmt::format("value={}", value);
}

std::string lte_error(Draws& draws, uint32_t count, Parent& parent) {
  uint32_t first = draws.word();
  uint8_t second = draws.byte();
  uint32_t third = draws.word();
  Bytes text = draws.bytes(103);
  expect(parent, count, cdma_message(0x020001B1, le32(first) + Bytes{second} + le32(third) + text));
  return fmt::format("first_value={} second_value={} third_value={} text={}", first, second, third,
                     as_hex(text));
}

std::string coverage(Draws& draws, uint32_t count, Parent& parent) {
  Bytes report = draws.bytes(32);
  expect(parent, count, generic_message(hex("01030004"), report));
  return "report=" + as_hex(report);
}

// Unlike any table that a request asks for.
std::string pfp(Draws& draws, uint32_t count, Parent& parent) {
  auto version = static_cast<uint16_t>(draws.word());
  auto rat = static_cast<uint16_t>(draws.between(100, 200));
  uint32_t index = draws.word();
  Bytes table = draws.bytes(224);
  expect(parent, count, cdma_message(0x0200001D, le16(version) + le16(rat) + le32(index) + table));
  return fmt::format("version={} rat={} tbl_idx={} table={}", version, rat, index, as_hex(table));
}

// The daemon tells the modem that there is no block to save; the parent gets nothing.
std::string hob_save(Draws& /*draws*/, uint32_t /*count*/, Parent& /*parent*/) { return ""; }

constexpr uint32_t kKpiHeaders[] = {0x01C0FFEE, 0x02C0FFEE, 0x03C0FFEE, 0x06C0FFEE,
                                    0x07C0FFEE, 0x08C0FFEE, 0xFFFFFFFF, 0x09C0FFEE};

Bytes kpi_packet(uint32_t package, uint32_t sequence, bool is_last, uint32_t size,
                 const Bytes& payload) {
  return Bytes{static_cast<uint8_t>(package), static_cast<uint8_t>(sequence),
               static_cast<uint8_t>(is_last ? 1 : 0), 0} +
         le16(size) + payload;
}

// Mostly packets that make sense where the package stands; some of another package, or out of
// their order, or empty, or of more bytes than there are.
Bytes draw_kpi_packet(Draws& draws, const KpiModel& kpi) {
  constexpr uint32_t kPackages = 8;
  bool begins = kpi.package() == -1 || draws.one_in(8);
  uint32_t package = draws.below(kPackages);
  uint32_t sequence = begins ? 1 : static_cast<uint32_t>(kpi.expected_sequence());
  if (kpi.package() != -1 && !draws.one_in(10)) package = static_cast<uint32_t>(kpi.package());
  if (draws.one_in(20)) sequence = draws.below(6);
  Bytes payload = draws.bytes(draws.one_in(20) ? draws.below(6) : draws.between(5, 500));
  if (begins) {
    payload = le32(draws.one_of(kKpiHeaders)) + payload;
    payload.resize(std::min<size_t>(payload.size(), kMaxUtilityData - kKpiHeaderSize));
  }
  auto size = static_cast<uint32_t>(payload.size());
  if (draws.one_in(20)) size = draws.below(2000);
  return kpi_packet(package, sequence, draws.one_in(4), size, payload);
}

std::string kpi(Draws& draws, uint32_t /*count*/, Parent& parent) {
  Bytes packet = draw_kpi_packet(draws, parent.kpi);
  if (auto message = parent.kpi.take(packet)) expect(parent, 1, *message);
  return utility_fields(1, packet);
}

struct Kind {
  const char* name;
  const char* indication;
  uint32_t weight;
  bool comes_in_bursts;
  Draw draw;
};

// A burst counts as many times as it is long.
constexpr Kind kKinds[] = {
    {"notification", "notify", 26, true, notify},
    {"generic", "generic", 10, true, generic_report},
    {"utility", "utils", 40, true, forwarded},
    {"cable", "utils", 60, false, cable},
    {"unknown utility", "utils", 30, false, unknown_utility},
    {"carrier event", "carrier_event", 20, true, carrier_event},
    {"LTE error", "lte_error", 20, true, lte_error},
    {"coverage", "coverage", 20, true, coverage},
    {"PFP table", "pfp", 20, true, pfp},
    {"HOB save", "hob_save", 5, false, hob_save},
    {"KPI packet", "utils", 800, false, kpi},
};

}  // namespace

Report draw_report(Draws& draws, uint32_t most, Parent& parent) {
  constexpr uint32_t kMaxBurst = 30;
  const Kind& kind = draws.weighted(kKinds);
  uint32_t count = kind.comes_in_bursts ? draws.between(1, std::min(most, kMaxBurst)) : 1;
  std::string fields = kind.draw(draws, count, parent);
  return {fmt::format("indicate {} {} --count {}", kind.indication, fields, count), kind.name,
          count};
}

}  // namespace soak
