// SPDX-License-Identifier: Apache-2.0
// Modem features.
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

const Bytes kSuccess = {0};
const Bytes kFailure = {5};

// Forwarded requests: the daemon does not check whether the modem refuses them.
Case relayed(uint32_t id, const Bytes& payload, const char* message, ModemModel& modem) {
  bool arrives = modem.request(message).got != Got::nothing;
  return {generic(id, payload), generic_reply(id, arrives ? kSuccess : kFailure)};
}

// A request whose reply contains the modem's data, or no data after a refusal.
Case with_data(uint32_t id, const Bytes& payload, const char* message, const Bytes& data,
               ModemModel& modem) {
  Got got = modem.request(message).got;
  Bytes kept = got == Got::answer ? data : Bytes();
  return {generic(id, payload), generic_reply(id, got == Got::nothing ? kFailure : kept)};
}

Case silent_reboot(Random& random, ModemModel& modem) {
  return with_data(0x50019, random.bytes(random.below(8)), "utils",
                   modem.network().silent_reboot_answer, modem);
}

Case filter(Random& random, ModemModel& modem) {
  return relayed(0x5001E, random.bytes(random.below(3)), "utils", modem);
}

Case coverage(Random& random, ModemModel& modem) {
  return relayed(random.one_in(2) ? 0x50020 : 0x50029, random.bytes(random.below(300)), "utils",
                 modem);
}

Case call_end_state(Random& random, ModemModel& modem) {
  constexpr uint32_t kId = 0x50505;
  const Bytes& whole = modem.network().call_end_radio_state;
  Bytes state(whole.begin() + 1, whole.end());
  Bytes request = generic(kId, random.bytes(1));
  Got got = modem.request("utils").got;
  if (got == Got::nothing) return {request, generic_reply(kId, kFailure)};
  return {request,
          generic_reply(kId, kSuccess + (got == Got::answer ? state : zeros(state.size())))};
}

// The modem's record after its result, without a header.
Case data_plmn(Random& random, ModemModel& modem) {
  const Bytes& record = modem.network().data_plmn;
  Bytes request = generic(0x60001, random.bytes(random.below(8)));
  Exchange exchange = modem.request("data_plmn");
  if (exchange.is_answered()) return {request, zeros(8) + record};
  if (exchange.got == Got::nothing) return {request, zeros(8 + record.size())};
  return {request, words({exchange.result, exchange.error}) + zeros(record.size())};
}

Case operator_name(Random& random, ModemModel& modem) {
  constexpr uint32_t kId = 0xA0006;
  const auto& entry = random.one_of(modem.network().operators);
  bool is_known = !random.one_in(4);
  Bytes request = generic(kId, le16(entry.mcc) + le16(is_known ? entry.mnc : 77U));
  bool done = modem.request("get_plmn_name").is_answered() && is_known;
  return {request, generic_reply(kId, done ? characters(entry.name) : kFailure)};
}

Case antenna_tuning(Random& random, ModemModel& modem) {
  Bytes setting = random.bytes(random.below(40));
  Bytes kept(setting.begin(), setting.begin() + std::min<ptrdiff_t>(24, std::ssize(setting)));
  return with_data(0x5002A, setting, "tuner", kept, modem);
}

// If the modem serves the request, the table follows as an unsolicited message.
Case pfp(Random& /*random*/, ModemModel& modem) {
  constexpr uint32_t kId = 0x0200001C;
  Exchange exchange = modem.request("pfp");
  if (exchange.is_served) modem.expect_table();
  return {cdma(kId), reply(kId, status_of(exchange.got != Got::nothing))};
}

Bytes utility_answer(uint32_t type, const Network& network) {
  if (type == 3) return network.silent_reboot_answer;
  return type == 7 ? network.call_end_radio_state : Bytes();
}

// The status is 0 even if nothing was sent because the data is empty or too long.
Case utility(Random& random, ModemModel& modem) {
  constexpr uint32_t kId = 0x0200001E;
  constexpr uint32_t kRoom = 256;
  uint32_t type = random.below(10);
  uint32_t length = random.one_in(5) ? random.below(300) : random.below(10);
  Bytes request = cdma(kId, words({type, length}) + random.bytes(kRoom));
  bool is_sent = length != 0 && length <= kRoom;
  bool done = is_sent && modem.request("utils").is_answered();
  return {request, reply(kId, 0, done ? utility_answer(type, modem.network()) : Bytes())};
}

constexpr Family kFeatureFamilies[] = {
    {"silent reboot", 3, silent_reboot, {{"utils"}}},
    {"filter", 3, filter, {{"utils"}}},
    {"coverage", 3, coverage, {{"utils"}}},
    {"call-end state", 3, call_end_state, {{"utils"}}},
    {"data PLMN", 3, data_plmn, {{"data_plmn"}}},
    {"operator name", 2, operator_name, {{"get_plmn_name"}}},
    {"antenna tuning", 3, antenna_tuning, {{"tuner"}}},
    {"PFP table", 2, pfp, {{"pfp"}}},
    {"utility", 3, utility, {{"utils"}}},
};

}  // namespace

std::span<const Family> feature_families() { return kFeatureFamilies; }

}  // namespace soak
