// SPDX-License-Identifier: Apache-2.0
// The carrier's settings.
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

constexpr uint32_t kNotSupported = 6;

// A setting request without a payload is declined: nobody behind the carrier handler knows it.
bool is_empty(Draws& draws) { return draws.one_in(50); }
Case declined(uint32_t id) { return {cdma(id), reply(id, kNotSupported)}; }

// Both band classes are told under the id of the first one.
Case get_band(Draws& draws, ModemModel& modem) {
  constexpr uint32_t kReplyId = 0x020000B0;
  uint32_t selector = draws.below(2);
  bool done = modem.ask("read_band").is_answered();
  uint32_t band = done ? modem.memory().bands[selector] : 0;
  return {cdma(kReplyId + 2 * selector), reply(kReplyId, 0, le32(band))};
}

Case set_band(Draws& draws, ModemModel& modem) {
  uint32_t selector = draws.below(2);
  uint32_t id = 0x020000B1 + 2 * selector;
  if (is_empty(draws)) return declined(id);
  uint32_t band = draws.word();
  Bytes request = cdma(id, le32(band), draw_code(draws));
  Exchange exchange = modem.ask("write_band");
  if (exchange.is_served) modem.memory().bands[selector] = band;
  return {request, echo(request, status_of(exchange.is_answered()))};
}

Case set_roaming_list(Draws& draws, ModemModel& modem) {
  constexpr uint32_t kId = 0x020000B4;
  if (is_empty(draws)) return declined(kId);
  Bytes segment = draws.bytes(draws.one_in(100) ? draws.below(16384) : draws.below(100));
  auto size = static_cast<uint32_t>(segment.size());
  Bytes request = cdma(kId, le32(size) + segment, draw_code(draws));
  bool done = modem.ask("set_roaming_list_segment").is_answered();
  return {request, echo(request, status_of(done))};
}

// Answered, and then answered as not supported.
Case set_profile(Draws& draws, ModemModel& modem) {
  constexpr uint32_t kId = 0x020000B5;
  if (is_empty(draws)) return declined(kId);
  Bytes request = cdma(kId, le32(draws.word()), draw_code(draws));
  bool done = modem.ask("switch_profile").is_answered();
  return {request, echo(request, status_of(done)) + reply(kId, kNotSupported)};
}

Case factory_reset(Draws& draws, ModemModel& modem) {
  Bytes request = cdma(0x020000B6, draws.bytes(draws.below(3)), draw_code(draws));
  Exchange exchange = modem.ask("factory_reset");
  if (exchange.is_served) modem.reset();
  return {request, echo(request, status_of(exchange.is_answered()))};
}

constexpr ItemKey kDdtm = {10018, 0};
constexpr ItemKey kLteOption = {10017, 0};

Case get_ddtm(Draws& draws, ModemModel& modem) {
  Bytes request = cdma(draws.one_in(2) ? 0x020000B7 : 0x020000B9, {}, draw_code(draws));
  auto [got, data] = modem.read_item(kDdtm);
  if (got != Got::answer) return {request, echo(request, 5)};
  return {request, echo(request, 0, le32(data[0]))};
}

Case set_ddtm(Draws& draws, ModemModel& modem) {
  Bytes value = draws.bytes(1);
  Bytes request = cdma(draws.one_in(2) ? 0x020000B8 : 0x020000BA, value, draw_code(draws));
  return {request, echo(request, status_of(modem.write_item(kDdtm, 0, value)))};
}

Case get_lte_option(Draws& draws, ModemModel& modem) {
  Bytes request = cdma(0x020000BE, {}, draw_code(draws));
  auto [got, data] = modem.read_item(kLteOption);
  return {request, echo(request, status_of(got == Got::answer), data)};
}

Case set_lte_option(Draws& draws, ModemModel& modem) {
  Bytes value = draws.bytes(draws.one_in(50) ? draws.between(510, 514) : draws.below(8));
  Bytes request = cdma(0x020000BF, value, draw_code(draws));
  bool done = value.size() <= kMaxItemBytes && modem.write_item(kLteOption, 0, value);
  return {request, echo(request, status_of(done))};
}

Case get_bsr_timer(Draws& draws, ModemModel& modem) {
  Bytes request = cdma(0x020000BC, {}, draw_code(draws));
  bool done = modem.ask("get_bsr_timer").is_answered();
  return {request, echo(request, 0, le32(done ? modem.memory().bsr_timer : 0))};
}

Case set_bsr_timer(Draws& draws, ModemModel& modem) {
  uint32_t timer = draws.word();
  Bytes request = cdma(0x020000BD, le32(timer), draw_code(draws));
  Exchange exchange = modem.ask("set_bsr_timer");
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
