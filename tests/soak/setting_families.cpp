// SPDX-License-Identifier: Apache-2.0
// The carrier's settings.
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

constexpr uint32_t kNotSupported = 6;

// A setting request without a payload is declined: no other handler has its id.
bool is_empty(Random& random) { return random.one_in(50); }
Case declined(uint32_t id) { return {cdma(id), reply(id, kNotSupported)}; }

// The replies for both band classes have the id of the first one.
Case get_band(Random& random, ModemModel& modem) {
  constexpr uint32_t kReplyId = 0x020000B0;
  uint32_t selector = random.below(2);
  bool done = modem.request("read_band").is_answered();
  uint32_t band = done ? modem.memory().bands[selector] : 0;
  return {cdma(kReplyId + 2 * selector), reply(kReplyId, 0, le32(band))};
}

Case set_band(Random& random, ModemModel& modem) {
  uint32_t selector = random.below(2);
  uint32_t id = 0x020000B1 + 2 * selector;
  if (is_empty(random)) return declined(id);
  uint32_t band = random.word();
  Bytes request = cdma(id, le32(band), random_code(random));
  Exchange exchange = modem.request("write_band");
  if (exchange.is_served) modem.memory().bands[selector] = band;
  return {request, echo(request, status_of(exchange.is_answered()))};
}

Case set_roaming_list(Random& random, ModemModel& modem) {
  constexpr uint32_t kId = 0x020000B4;
  if (is_empty(random)) return declined(kId);
  Bytes segment = random.bytes(random.one_in(100) ? random.below(16384) : random.below(100));
  auto size = static_cast<uint32_t>(segment.size());
  Bytes request = cdma(kId, le32(size) + segment, random_code(random));
  bool done = modem.request("set_roaming_list_segment").is_answered();
  return {request, echo(request, status_of(done))};
}

// Gets a second reply, "not supported".
Case set_profile(Random& random, ModemModel& modem) {
  constexpr uint32_t kId = 0x020000B5;
  if (is_empty(random)) return declined(kId);
  Bytes request = cdma(kId, le32(random.word()), random_code(random));
  bool done = modem.request("switch_profile").is_answered();
  return {request, echo(request, status_of(done)) + reply(kId, kNotSupported)};
}

Case factory_reset(Random& random, ModemModel& modem) {
  Bytes request = cdma(0x020000B6, random.bytes(random.below(3)), random_code(random));
  Exchange exchange = modem.request("factory_reset");
  if (exchange.is_served) modem.reset();
  return {request, echo(request, status_of(exchange.is_answered()))};
}

constexpr ItemKey kDdtm = {10018, 0};
constexpr ItemKey kLteOption = {10017, 0};

Case get_ddtm(Random& random, ModemModel& modem) {
  Bytes request = cdma(random.one_in(2) ? 0x020000B7 : 0x020000B9, {}, random_code(random));
  auto [got, data] = modem.read_item(kDdtm);
  if (got != Got::answer) return {request, echo(request, 5)};
  return {request, echo(request, 0, le32(data[0]))};
}

Case set_ddtm(Random& random, ModemModel& modem) {
  Bytes value = random.bytes(1);
  Bytes request = cdma(random.one_in(2) ? 0x020000B8 : 0x020000BA, value, random_code(random));
  return {request, echo(request, status_of(modem.write_item(kDdtm, 0, value)))};
}

Case get_lte_option(Random& random, ModemModel& modem) {
  Bytes request = cdma(0x020000BE, {}, random_code(random));
  auto [got, data] = modem.read_item(kLteOption);
  return {request, echo(request, status_of(got == Got::answer), data)};
}

Case set_lte_option(Random& random, ModemModel& modem) {
  Bytes value = random.bytes(random.one_in(50) ? random.between(510, 514) : random.below(8));
  Bytes request = cdma(0x020000BF, value, random_code(random));
  bool done = value.size() <= kMaxItemBytes && modem.write_item(kLteOption, 0, value);
  return {request, echo(request, status_of(done))};
}

Case get_bsr_timer(Random& random, ModemModel& modem) {
  Bytes request = cdma(0x020000BC, {}, random_code(random));
  bool done = modem.request("get_bsr_timer").is_answered();
  return {request, echo(request, 0, le32(done ? modem.memory().bsr_timer : 0))};
}

Case set_bsr_timer(Random& random, ModemModel& modem) {
  uint32_t timer = random.word();
  Bytes request = cdma(0x020000BD, le32(timer), random_code(random));
  Exchange exchange = modem.request("set_bsr_timer");
  if (exchange.is_served) modem.memory().bsr_timer = timer;
  return {request, echo(request, status_of(exchange.is_answered()))};
}

constexpr Family kSettingFamilies[] = {
    {"band get", 4, get_band, {{"read_band"}}},
    {"band set", 4, set_band, {{"write_band"}}},
    {"roaming list", 2, set_roaming_list, {{"set_roaming_list_segment"}}},
    {"profile", 2, set_profile, {{"switch_profile"}}},
    {"factory reset", 1, factory_reset, {{"factory_reset"}}},
    {"DDTM get", 2, get_ddtm, {{"element_read"}}},
    {"DDTM set", 2, set_ddtm, {{"element_write"}}},
    {"LTE option get", 2, get_lte_option, {{"element_read"}}},
    {"LTE option set", 2, set_lte_option, {{"element_write"}}},
    {"BSR timer get", 4, get_bsr_timer, {{"get_bsr_timer"}}},
    {"BSR timer set", 4, set_bsr_timer, {{"set_bsr_timer"}}},
};

}  // namespace

std::span<const Family> setting_families() { return kSettingFamilies; }

}  // namespace soak
