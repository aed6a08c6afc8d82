// SPDX-License-Identifier: Apache-2.0
// Network information, and the codes that protect the modem.
#include "tests/e2e/support/engineering_records.h"
#include "tests/soak/families.h"

namespace soak {

namespace {

using namespace e2e;

constexpr size_t kApnListSize = 1017;
constexpr uint32_t kTotEntries = 15;

// The daemon sends the requests until one to the NAS service fails.
struct LteAnswers {
  bool is_complete;
  bool has_state;
  bool has_channels;
  bool has_power;
};

LteAnswers request_lte_data(ModemModel& modem) {
  LteAnswers answers{};
  answers.has_state = modem.request("get_lte_service_state").is_answered();
  answers.has_channels = modem.request("get_lte_channel").is_answered();
  for (const char* message : {"get_serving_system", "get_sig_info"}) {
    if (!modem.request(message).is_answered()) return answers;
  }
  Exchange transmitter = modem.request("get_tx_rx_info");
  answers.has_power = transmitter.is_answered();
  bool is_idle = transmitter.got == Got::refusal && transmitter.error == kNoRadio;
  answers.is_complete = answers.has_power || is_idle;
  return answers;
}

Case get_lte_data(Random& random, ModemModel& modem) {
  Bytes request = cdma(0x020000C0, {}, random_code(random));
  LteAnswers answers = request_lte_data(modem);
  if (!answers.is_complete) return {request, echo(request, 5)};
  const Cell& cell = modem.network().cell;
  Bytes channels =
      Bytes{cell.third, cell.fourth} + words({cell.second_channel, cell.first_channel});
  Bytes data = le32(answers.has_state ? 2 : 0) + le16(cell.mcc) + le16(cell.mnc) +
               le32(cell.cell_id) + (answers.has_channels ? channels : zeros(channels.size())) +
               Bytes{cell.rssi} + le16(cell.rsrp) + Bytes{cell.rsrq} +
               le32(answers.has_power ? cell.tx_power : 0);
  return {request, echo(request, 0, data)};
}

Case get_apns(Random& random, ModemModel& modem) {
  Bytes request = cdma(0x020000C1, {}, random_code(random));
  Bytes list;
  if (modem.request("get_active_ehrpd_apn").is_answered()) {
    const auto& apns = modem.network().apns;
    list = {static_cast<uint8_t>(apns.size())};
    for (const Apn& apn : apns) {
      list = list + padded(apn.name, 103) + le32(apn.first_value) + hex("C00002") +
             Bytes{apn.last_byte} + hex("20010DB8 00000000 00000000 000000") + Bytes{apn.last_byte};
    }
  }
  list.resize(kApnListSize);
  return {request, echo(request, 0, list)};
}

Case get_tot_order(Random& random, ModemModel& modem) {
  Bytes request = cdma(0x020000C4, {}, random_code(random));
  bool done = modem.request("get_tot_order").is_answered();
  const auto& order = modem.memory().tot_order;
  Bytes data = le16(done ? static_cast<uint32_t>(order.size()) : 0);
  for (uint32_t entry : order) data = data + le32(done ? entry : 0);
  data.resize(2 + 4 * kTotEntries);
  return {request, echo(request, 0, data)};
}

Case update_tot_order(Random& random, ModemModel& modem) {
  std::vector<uint32_t> order(random.below(kTotEntries + 3));
  std::generate(order.begin(), order.end(), [&] { return random.word(); });
  Bytes payload = le16(static_cast<uint32_t>(order.size()));
  for (uint32_t entry : order) payload = payload + le32(entry);
  Bytes request = cdma(0x020000C5, payload, random_code(random));
  if (order.size() > kTotEntries) return {request, echo(request, 5)};
  Exchange exchange = modem.request("update_tot_order");
  if (exchange.is_served) modem.memory().tot_order = order;
  return {request, echo(request, status_of(exchange.is_answered()))};
}

Case get_engineering_data(Random& random, ModemModel& modem) {
  bool is_evdo = random.one_in(2);
  uint32_t id = is_evdo ? 0x02000012 : 0x02000011;
  bool done = modem.request("engineering_info").is_answered();
  Bytes data = is_evdo ? evdo_data() : call_data();
  return {cdma(id), reply(id, 0, done ? data : zeros(data.size()))};
}

Case verify_lock(Random& random, ModemModel& modem) {
  constexpr uint32_t kId = 0x0200000A;
  constexpr uint32_t kRefused = 3;
  const std::string& right = modem.network().subsidy_lock_code;
  std::string code = random.one_in(2) ? right : random_code(random);
  bool is_open = modem.request("verify_subsidy_lock").is_answered() && code == right;
  return {cdma(kId, {}, code), reply(kId, is_open ? 0 : kRefused, zeros(6))};
}

// Gets a second reply, "not supported".
Case write_akey(Random& random, ModemModel& modem) {
  constexpr uint32_t kId = 0x02000013;
  constexpr size_t kAkeySize = 26;
  const std::string& spc = modem.memory().nam.spc;
  std::string code = random.one_in(4) ? random_code(random) : spc;
  std::string akey = random.digits(random.one_in(4) ? random.below(40) : kAkeySize);
  Bytes request = cdma(kId, characters(akey), code);
  bool done = akey.size() == kAkeySize && modem.request("write_akey").is_answered() && code == spc;
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
