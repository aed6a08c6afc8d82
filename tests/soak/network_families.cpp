// SPDX-License-Identifier: Apache-2.0
// What the modem tells the carrier's requests of its networks, and the codes that protect it.
#include "tests/e2e/support/engineering_records.h"
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

constexpr size_t kApnListSize = 1017;
constexpr uint32_t kTotEntries = 15;

// All requests are made until one of the NAS service fails.
struct LteAnswers {
  bool is_complete;
  bool has_state;
  bool has_channels;
  bool has_power;
};

LteAnswers ask_for_lte(ModemModel& modem) {
  LteAnswers answers{};
  answers.has_state = modem.ask("get_lte_service_state").is_answered();
  answers.has_channels = modem.ask("get_lte_channel").is_answered();
  for (const char* message : {"get_serving_system", "get_sig_info"}) {
    if (!modem.ask(message).is_answered()) return answers;
  }
  Exchange transmitter = modem.ask("get_tx_rx_info");
  answers.has_power = transmitter.is_answered();
  bool is_idle = transmitter.got == Got::refusal && transmitter.error == kNoRadio;
  answers.is_complete = answers.has_power || is_idle;
  return answers;
}

Case get_lte_data(Draws& draws, ModemModel& modem) {
  Bytes request = cdma(0x020000C0, {}, draw_code(draws));
  LteAnswers answers = ask_for_lte(modem);
  if (!answers.is_complete) return {request, echo(request, 5)};
  const Cell& cell = modem.network().cell;
  Bytes channels = Bytes{cell.third, cell.fourth} + words({cell.downlink, cell.uplink});
  Bytes data = le32(answers.has_state ? 2 : 0) + le16(cell.mcc) + le16(cell.mnc) +
               le32(cell.cell_id) + (answers.has_channels ? channels : zeros(channels.size())) +
               Bytes{cell.rssi} + le16(cell.rsrp) + Bytes{cell.rsrq} +
               le32(answers.has_power ? cell.tx_power : 0);
  return {request, echo(request, 0, data)};
}

Case get_apns(Draws& draws, ModemModel& modem) {
  Bytes request = cdma(0x020000C1, {}, draw_code(draws));
  Bytes list;
  if (modem.ask("get_active_ehrpd_apn").is_answered()) {
    const auto& apns = modem.network().apns;
    list = {static_cast<uint8_t>(apns.size())};
    for (const Apn& apn : apns) {
      list = list + padded(apn.name, 103) + le32(apn.type) + hex("C00002") + Bytes{apn.host} +
             hex("20010DB8 00000000 00000000 000000") + Bytes{apn.host};
    }
  }
  list.resize(kApnListSize);
  return {request, echo(request, 0, list)};
}

Case get_tot_order(Draws& draws, ModemModel& modem) {
  Bytes request = cdma(0x020000C4, {}, draw_code(draws));
  bool done = modem.ask("get_tot_order").is_answered();
  const auto& order = modem.memory().tot_order;
  Bytes data = le16(done ? static_cast<uint32_t>(order.size()) : 0);
  for (uint32_t entry : order) data = data + le32(done ? entry : 0);
  data.resize(2 + 4 * kTotEntries);
  return {request, echo(request, 0, data)};
}

Case update_tot_order(Draws& draws, ModemModel& modem) {
  std::vector<uint32_t> order(draws.below(kTotEntries + 3));
  std::generate(order.begin(), order.end(), [&] { return draws.word(); });
  Bytes payload = le16(static_cast<uint32_t>(order.size()));
  for (uint32_t entry : order) payload = payload + le32(entry);
  Bytes request = cdma(0x020000C5, payload, draw_code(draws));
  if (order.size() > kTotEntries) return {request, echo(request, 5)};
  Exchange exchange = modem.ask("update_tot_order");
  if (exchange.is_served) modem.memory().tot_order = order;
  return {request, echo(request, status_of(exchange.is_answered()))};
}

Case get_engineering_data(Draws& draws, ModemModel& modem) {
  bool is_evdo = draws.one_in(2);
  uint32_t id = is_evdo ? 0x02000012 : 0x02000011;
  bool done = modem.ask("engineering_info").is_answered();
  Bytes data = is_evdo ? evdo_data() : call_data();
  return {cdma(id), reply(id, 0, done ? data : zeros(data.size()))};
}

Case verify_lock(Draws& draws, ModemModel& modem) {
  constexpr uint32_t kId = 0x0200000A;
  constexpr uint32_t kRefused = 3;
  const std::string& right = modem.network().subsidy_lock_code;
  std::string code = draws.one_in(2) ? right : draw_code(draws);
  bool is_open = modem.ask("verify_subsidy_lock").is_answered() && code == right;
  return {cdma(kId, {}, code), reply(kId, is_open ? 0 : kRefused, zeros(6))};
}

// Answered, and then answered as not supported.
Case write_akey(Draws& draws, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000013;
  constexpr size_t kAkeySize = 26;
  const std::string& spc = modem.memory().nam.spc;
  std::string code = draws.one_in(4) ? draw_code(draws) : spc;
  std::string akey = draws.digits(draws.one_in(4) ? draws.below(40) : kAkeySize);
  Bytes request = cdma(kId, characters(akey), code);
  bool done = akey.size() == kAkeySize && modem.ask("write_akey").is_answered() && code == spc;
  return {request, echo(request, status_of(done)) + reply(kId, 6)};
}

constexpr Family kNetworkFamilies[] = {
    {"LTE data",
     3,
     get_lte_data,
     {{"get_lte_service_state"},
      {"get_lte_channel"},
      {"get_serving_system"},
      {"get_sig_info"},
      {"get_tx_rx_info"}}},
    {"access points", 2, get_apns, {{"get_active_ehrpd_apn"}}},
    {"TOT order get", 4, get_tot_order, {{"get_tot_order"}}},
    {"TOT order update", 4, update_tot_order, {{"update_tot_order"}}},
    {"engineering data", 1, get_engineering_data, {{"engineering_info"}}},
    {"subsidy lock", 4, verify_lock, {{"verify_subsidy_lock"}}},
    {"A-key", 4, write_akey, {{"write_akey"}}},
};

}  // namespace

std::span<const Family> network_families() { return kNetworkFamilies; }

}  // namespace soak
