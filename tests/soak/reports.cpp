// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/reports.h"

#include <fmt/format.h>

namespace soak {

namespace {

using namespace e2e;

constexpr size_t kMaxUtilityData = 512;

// Returns the fields of the indication, in the words of the modem's control socket.
using Generate = std::string (*)(Random& random, uint32_t count, Parent& parent);

void expect(Parent& parent, uint32_t count, const Bytes& message) {
  parent.messages.insert(parent.messages.end(), count, message);
}

std::string notify(Random& /*random*/, uint32_t count, Parent& parent) {
  for (uint32_t i = 0; i < count; ++i) {
    std::string text = fmt::format("UNSOLNOTIFY9876-{}", parent.next_notification++);
    expect(parent, 1, cdma_message(1111, padded(text.substr(0, 20), 22)));
  }
  return "";
}

std::string generic_report(Random& /*random*/, uint32_t count, Parent& parent) {
  expect(parent, count, generic_message(hex("00020006"), {}));
  return "";
}

struct ForwardedType {
  uint32_t type;
  const char* id;
  const char* prefix;
  bool is_one_byte;
};

constexpr ForwardedType kForwardedTypes[] = {
    {0, "000B0003", "02", false}, {2, "000C0004", "", false}, {3, "000E0004", "", false},
    {5, "00120004", "", false},   {6, "00130004", "", false}, {9, "00150004", "", true},
};

std::string utility_fields(uint32_t type, const Bytes& data) {
  return fmt::format("type={} data={}", type, as_hex(data));
}

std::string forwarded(Random& random, uint32_t count, Parent& parent) {
  const auto& row = random.one_of(kForwardedTypes);
  Bytes data =
      random.bytes(random.one_in(20) ? random.below(kMaxUtilityData + 1) : random.below(40));
  Bytes shown = data;
  if (row.is_one_byte) shown.resize(1);
  expect(parent, count, generic_message(hex(row.id), hex(row.prefix) + shown));
  return utility_fields(row.type, data);
}

// One byte contains the cable status; data of any other size has no effect.
std::string cable(Random& random, uint32_t /*count*/, Parent& parent) {
  Bytes data = random.one_in(4) ? random.bytes(random.below(3))
                                : Bytes{random.one_in(2) ? uint8_t{0} : random.byte()};
  if (data.size() == 1) parent.cable_status = data[0] != 0 ? "1" : "0";
  return utility_fields(7, data);
}

std::string unknown_utility(Random& random, uint32_t /*count*/, Parent& /*parent*/) {
  return utility_fields(random.between(10, 1000), random.bytes(random.below(40)));
}

std::string carrier_event(Random& random, uint32_t count, Parent& parent) {
  auto value = static_cast<uint16_t>(random.word());
  expect(parent, count, cdma_message(0x020001B0, le32(value)));
  return fmt::format("value={}", value);
}

std::string lte_error(Random& random, uint32_t count, Parent& parent) {
  uint32_t first = random.word();
  uint8_t second = random.byte();
  uint32_t third = random.word();
  Bytes text = random.bytes(103);
  expect(parent, count, cdma_message(0x020001B1, le32(first) + Bytes{second} + le32(third) + text));
  return fmt::format("first_value={} second_value={} third_value={} text={}", first, second, third,
                     as_hex(text));
}

std::string coverage(Random& random, uint32_t count, Parent& parent) {
  Bytes report = random.bytes(32);
  expect(parent, count, generic_message(hex("01030004"), report));
  return "report=" + as_hex(report);
}

// Differs from every table that a request returns.
std::string pfp(Random& random, uint32_t count, Parent& parent) {
  auto first_value = static_cast<uint16_t>(random.word());
  auto rat = static_cast<uint16_t>(random.between(100, 200));
  uint32_t index = random.word();
  Bytes bytes = random.bytes(224);
  expect(parent, count,
         cdma_message(0x0200001D, le16(first_value) + le16(rat) + le32(index) + bytes));
  return fmt::format("first_value={} rat={} tbl_idx={} remaining_bytes={}", first_value, rat, index,
                     as_hex(bytes));
}

// The daemon reports to the modem that there is no block to save. The parent gets no message.
std::string hob_save(Random& /*random*/, uint32_t /*count*/, Parent& /*parent*/) { return ""; }

constexpr uint32_t kKpiHeaders[] = {0x01C0FFEE, 0x02C0FFEE, 0x03C0FFEE, 0x06C0FFEE,
                                    0x07C0FFEE, 0x08C0FFEE, 0xFFFFFFFF, 0x09C0FFEE};

Bytes kpi_packet(uint32_t package, uint32_t sequence, bool is_last, uint32_t size,
                 const Bytes& payload) {
  return Bytes{static_cast<uint8_t>(package), static_cast<uint8_t>(sequence),
               static_cast<uint8_t>(is_last ? 1 : 0), 0} +
         le16(size) + payload;
}

// Mostly valid packets; some belong to another package, are out of order, are empty, or claim more
// bytes than they have.
Bytes random_kpi_packet(Random& random, const KpiModel& kpi) {
  constexpr uint32_t kPackages = 8;
  bool begins = kpi.package() == -1 || random.one_in(8);
  uint32_t package = random.below(kPackages);
  uint32_t sequence = begins ? 1 : static_cast<uint32_t>(kpi.expected_sequence());
  if (kpi.package() != -1 && !random.one_in(10)) package = static_cast<uint32_t>(kpi.package());
  if (random.one_in(20)) sequence = random.below(6);
  Bytes payload = random.bytes(random.one_in(20) ? random.below(6) : random.between(5, 500));
  if (begins) {
    payload = le32(random.one_of(kKpiHeaders)) + payload;
    payload.resize(std::min<size_t>(payload.size(), kMaxUtilityData - kKpiHeaderSize));
  }
  auto size = static_cast<uint32_t>(payload.size());
  if (random.one_in(20)) size = random.below(2000);
  return kpi_packet(package, sequence, random.one_in(4), size, payload);
}

std::string kpi(Random& random, uint32_t /*count*/, Parent& parent) {
  Bytes packet = random_kpi_packet(random, parent.kpi);
  if (auto message = parent.kpi.take(packet)) expect(parent, 1, *message);
  return utility_fields(1, packet);
}

struct Kind {
  const char* name;
  const char* indication;
  uint32_t weight;
  bool comes_in_bursts;
  Generate generate;
};

// A kind that comes in bursts has a lower weight for the same number of indications.
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

Report random_report(Random& random, uint32_t max, Parent& parent) {
  constexpr uint32_t kMaxBurst = 30;
  const Kind& kind = random.weighted(kKinds);
  uint32_t count = kind.comes_in_bursts ? random.between(1, std::min(max, kMaxBurst)) : 1;
  std::string fields = kind.generate(random, count, parent);
  return {fmt::format("indicate {} {} --count {}", kind.indication, fields, count), kind.name,
          count};
}

}  // namespace soak
