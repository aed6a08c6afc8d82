// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/modem_model.h"

#include "tests/e2e/support/engineering_records.h"

namespace soak {

namespace {

using e2e::as_hex;
using nlohmann::json;

constexpr uint32_t kFullService = 2;

// The first TLV has at least four bytes, so these truncations leave no complete TLV.
constexpr FaultKind kFaults[] = {
    {"error", false, Got::refusal},
    {"delay delay_ms=2", true, Got::answer},
    {"stray", true, Got::answer},
    {"duplicate", true, Got::answer},
    {"truncated bytes=0", true, Got::nothing},
    {"truncated bytes=2", true, Got::nothing},
    {"truncated bytes=3", true, Got::nothing},
    {"malformed", true, Got::nothing},
    {"garbage", true, Got::nothing},
};

// The delayed answer can arrive while the next request waits for its own.
constexpr FaultKind kSlowFaults[] = {
    {"silent", false, Got::nothing},
    {"transaction", true, Got::nothing},
    {"delay delay_ms=15300", true, Got::nothing},
};

Cell random_cell(Random& random) {
  auto u16 = [&] { return static_cast<uint16_t>(random.word()); };
  auto plmn_part = [&] { return static_cast<uint16_t>(random.below(1000)); };
  return {plmn_part(), plmn_part(),   random.word(), random.byte(), random.byte(), u16(),
          u16(),       random.byte(), random.byte(), u16(),         random.word()};
}

std::vector<Apn> random_apns(Random& random) {
  std::vector<Apn> apns;
  uint32_t count = random.between(1, 8);
  while (apns.size() < count) {
    apns.push_back({random.letters(random.between(1, 103)), random.byte(), random.byte()});
  }
  return apns;
}

std::vector<Operator> random_operators(Random& random) {
  return {{1, 1, random.letters(1)}, {310, 4, random.letters(17)}, {999, 999, random.letters(64)}};
}

Network random_network(Random& random) {
  Network network{};
  network.cell = random_cell(random);
  network.apns = random_apns(random);
  network.operators = random_operators(random);
  network.subsidy_lock_code = random.digits(6);
  network.data_plmn = random.bytes(560);
  network.silent_reboot_answer = random.bytes(random.below(40));
  network.call_end_radio_state = random.bytes(17);
  network.pfp_first_value = 1;
  network.pfp_rat = 8;
  network.pfp_bytes = random.bytes(224);
  return network;
}

Memory random_memory(Random& random) {
  Memory memory{};
  for (uint32_t item : {28U, 37U, 38U, 39U, 10003U, 10017U}) {
    memory.items[{item, 0}] = random.bytes(random.between(1, 8));
  }
  memory.items[{10018, 0}] = random.bytes(1);
  memory.nam.record.mdn = "913555014200000";  // the item's unused positions are zero digits
  memory.nam.pairs[0] = static_cast<uint16_t>(memory.nam.record.sid);
  memory.nam.pairs[1] = static_cast<uint16_t>(memory.nam.record.nid);
  memory.bands[0] = random.word();
  memory.bands[1] = random.word();
  memory.bsr_timer = random.word();
  memory.tot_order = {random.word(), random.word()};
  return memory;
}

json cell_json(const Cell& cell) {
  return {{"service_state", kFullService},
          {"mcc", cell.mcc},
          {"mnc", cell.mnc},
          {"cell_id", cell.cell_id},
          {"channel_third_value", cell.third},
          {"channel_fourth_value", cell.fourth},
          {"second_channel", cell.second_channel},
          {"first_channel", cell.first_channel},
          {"rssi", static_cast<int8_t>(cell.rssi)},
          {"rsrq", static_cast<int8_t>(cell.rsrq)},
          {"rsrp", static_cast<int16_t>(cell.rsrp)},
          {"tx_power", static_cast<int32_t>(cell.tx_power)}};
}

json apns_json(const std::vector<Apn>& apns) {
  json list = json::array();
  for (const Apn& apn : apns) {
    list.push_back({{"name", apn.name},
                    {"first_value", apn.first_value},
                    {"second_value", 0xC0000200U + apn.last_byte},
                    {"remaining_bytes", fmt::format("20010db8{:024x}", apn.last_byte)}});
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

std::span<const FaultKind> all_faults() { return kFaults; }
std::span<const FaultKind> slow_faults() { return kSlowFaults; }

std::vector<std::string> Fault::commands() const {
  std::vector<std::string> commands;
  if (unaffected != 0) {
    commands.push_back(fmt::format("fault delay message={} times={}", message, unaffected));
  }
  commands.push_back(fmt::format("fault {} message={} times=1 result={} error={}", kind->name,
                                 message, result, error));
  return commands;
}

ModemModel::ModemModel(Random& random)
    : network_(random_network(random)), start_(random_memory(random)), memory_(start_) {}

std::optional<Fault> ModemModel::take_met() {
  fault_.reset();
  return std::exchange(met_, std::nullopt);
}

Exchange ModemModel::request(const std::string& message) {
  if (!fault_ || fault_->message != message) return {Got::answer, true, 0, 0};
  if (unaffected_ != 0) {
    --unaffected_;
    return {Got::answer, true, 0, 0};
  }
  met_ = std::exchange(fault_, std::nullopt);
  return {met_->kind->got, met_->kind->is_served, met_->result, met_->error};
}

ModemModel::Read ModemModel::read_item(ItemKey key, uint32_t offset) {
  Exchange exchange = request("element_read");
  if (!exchange.is_answered()) return {exchange.got, {}};
  auto item = memory_.items.find(key);
  if (item == memory_.items.end()) return {Got::refusal, {}};
  size_t start = std::min<size_t>(offset, item->second.size());
  return {Got::answer,
          Bytes(item->second.begin() + static_cast<ptrdiff_t>(start), item->second.end())};
}

bool ModemModel::write_item(ItemKey key, uint32_t offset, const Bytes& data) {
  Exchange exchange = request("element_write");
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
           {{"first_value", network_.pfp_first_value},
            {"rat", network_.pfp_rat},
            {"remaining_bytes", as_hex(network_.pfp_bytes)}}},
          {"features",
           {{"silent_reboot_answer", as_hex(network_.silent_reboot_answer)},
            {"call_end_radio_state", as_hex(network_.call_end_radio_state)}}},
          {"engineering",
           {{"call_processing_text", as_hex(e2e::call_record())},
            {"evdo_text", as_hex(e2e::evdo_record())}}},
          {"nv", items_json(memory_.items)}};
}

}  // namespace soak
