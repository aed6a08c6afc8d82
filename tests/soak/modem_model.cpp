// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/modem_model.h"

#include "tests/e2e/support/engineering_records.h"

namespace soak {

namespace {

using e2e::as_hex;
using nlohmann::json;

constexpr uint32_t kFullService = 2;

Cell draw_cell(Draws& draws) {
  auto half = [&] { return static_cast<uint16_t>(draws.word()); };
  auto plmn_part = [&] { return static_cast<uint16_t>(draws.below(1000)); };
  return {plmn_part(), plmn_part(),  draws.word(), draws.byte(), draws.byte(), half(),
          half(),      draws.byte(), draws.byte(), half(),       draws.word()};
}

std::vector<Apn> draw_apns(Draws& draws) {
  std::vector<Apn> apns;
  uint32_t count = draws.between(1, 8);
  while (apns.size() < count) {
    apns.push_back({draws.letters(draws.between(1, 103)), draws.byte(), draws.byte()});
  }
  return apns;
}

std::vector<Operator> draw_operators(Draws& draws) {
  return {{1, 1, draws.letters(1)}, {310, 4, draws.letters(17)}, {999, 999, draws.letters(64)}};
}

Network draw_network(Draws& draws) {
  Network network{};
  network.cell = draw_cell(draws);
  network.apns = draw_apns(draws);
  network.operators = draw_operators(draws);
  network.subsidy_lock_code = draws.digits(6);
  network.data_plmn = draws.bytes(560);
  network.silent_reboot_answer = draws.bytes(draws.below(40));
  network.call_end_radio_state = draws.bytes(17);
  network.pfp_version = 1;
  network.pfp_rat = 8;
  network.pfp_table = draws.bytes(224);
  return network;
}

Memory draw_memory(Draws& draws) {
  Memory memory{};
  for (uint32_t item : {28U, 37U, 38U, 39U, 10003U, 10017U}) {
    memory.items[{item, 0}] = draws.bytes(draws.between(1, 8));
  }
  memory.items[{10018, 0}] = draws.bytes(1);
  memory.nam.record.mdn = "913555014200000";  // every position becomes a digit
  memory.nam.pairs[0] = static_cast<uint16_t>(memory.nam.record.sid);
  memory.nam.pairs[1] = static_cast<uint16_t>(memory.nam.record.nid);
  memory.bands[0] = draws.word();
  memory.bands[1] = draws.word();
  memory.bsr_timer = draws.word();
  memory.tot_order = {draws.word(), draws.word()};
  return memory;
}

json cell_json(const Cell& cell) {
  return {{"service_state", kFullService},
          {"mcc", cell.mcc},
          {"mnc", cell.mnc},
          {"cell_id", cell.cell_id},
          {"channel_third_value", cell.third},
          {"channel_fourth_value", cell.fourth},
          {"downlink_channel", cell.downlink},
          {"uplink_channel", cell.uplink},
          {"rssi", static_cast<int8_t>(cell.rssi)},
          {"rsrq", static_cast<int8_t>(cell.rsrq)},
          {"rsrp", static_cast<int16_t>(cell.rsrp)},
          {"tx_power", static_cast<int32_t>(cell.tx_power)}};
}

json apns_json(const std::vector<Apn>& apns) {
  json list = json::array();
  for (const Apn& apn : apns) {
    list.push_back({{"name", apn.name},
                    {"address_type", apn.type},
                    {"ipv4", fmt::format("192.0.2.{}", apn.host)},
                    {"ipv6", fmt::format("2001:db8::{:x}", apn.host)}});
  }
  return list;
}

json operators_json(const std::vector<Operator>& operators) {
  json list = json::array();
  for (const Operator& entry : operators) {
    list.push_back({{"mcc", entry.mcc},
                    {"mnc", entry.mnc},
                    {"short_name", entry.name},
                    {"long_name", "Other"}});
  }
  return list;
}

json items_json(const std::map<ItemKey, Bytes>& items) {
  json list = json::array();
  for (const auto& [key, data] : items) {
    list.push_back({{"rde_id", key.rde_id}, {"record", key.record}, {"data", as_hex(data)}});
  }
  return list;
}

}  // namespace

ModemModel::ModemModel(Draws& draws)
    : network_(draw_network(draws)), start_(draw_memory(draws)), memory_(start_) {}

std::optional<Spoiling> ModemModel::take_met() {
  spoiling_.reset();
  return std::exchange(met_, std::nullopt);
}

Exchange ModemModel::ask(const std::string& message) {
  if (!spoiling_ || spoiling_->message != message) return {Got::answer, true, 0, 0};
  if (still_spared_ != 0) {
    --still_spared_;
    return {Got::answer, true, 0, 0};
  }
  met_ = std::exchange(spoiling_, std::nullopt);
  return {met_->kind->got, met_->kind->is_served, met_->result, met_->error};
}

ModemModel::Read ModemModel::read_item(ItemKey key, uint32_t offset) {
  Exchange exchange = ask("element_read");
  if (!exchange.is_answered()) return {exchange.got, {}};
  auto item = memory_.items.find(key);
  if (item == memory_.items.end()) return {Got::refusal, {}};
  size_t start = std::min<size_t>(offset, item->second.size());
  return {Got::answer,
          Bytes(item->second.begin() + static_cast<ptrdiff_t>(start), item->second.end())};
}

bool ModemModel::write_item(ItemKey key, uint32_t offset, const Bytes& data) {
  Exchange exchange = ask("element_write");
  if (!exchange.is_served || size_t{offset} + data.size() > kMaxItemBytes) return false;
  Bytes& item = memory_.items[key];
  item.resize(std::max(item.size(), offset + data.size()));
  std::copy(data.begin(), data.end(), item.begin() + offset);
  return exchange.is_answered();
}

void ModemModel::reset() {
  memory_ = start_;
  was_reset_ = true;
}

json ModemModel::state() const {
  return {{"lte", cell_json(network_.cell)},
          {"ehrpd_apns", apns_json(network_.apns)},
          {"operators", operators_json(network_.operators)},
          {"security", {{"subsidy_lock_code", network_.subsidy_lock_code}}},
          {"carrier",
           {{"bc10", memory_.bands[0]},
            {"bc14", memory_.bands[1]},
            {"bsr_timer", memory_.bsr_timer},
            {"tot_order", memory_.tot_order},
            {"data_plmn", as_hex(network_.data_plmn)}}},
          {"pfp",
           {{"version", network_.pfp_version},
            {"rat", network_.pfp_rat},
            {"table", as_hex(network_.pfp_table)}}},
          {"features",
           {{"silent_reboot_answer", as_hex(network_.silent_reboot_answer)},
            {"call_end_radio_state", as_hex(network_.call_end_radio_state)}}},
          {"engineering",
           {{"call_processing_text", as_hex(e2e::call_record())},
            {"evdo_text", as_hex(e2e::evdo_record())}}},
          {"nv", items_json(memory_.items)}};
}

}  // namespace soak
