// SPDX-License-Identifier: Apache-2.0
// A small model of the modem: what it remembers, and what the daemon gets out of each exchange with
// it. It shares nothing with the simulated modem but the meaning of the requests.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "tests/e2e/support/nam_fixture.h"
#include "tests/soak/spoiling.h"

namespace soak {

struct Exchange {
  Got got;
  bool is_served;
  uint32_t result;  // of a refusal
  uint32_t error;

  bool is_answered() const { return got == Got::answer; }
};

struct Cell {
  uint16_t mcc, mnc;
  uint32_t cell_id;
  uint8_t third, fourth;  // of the channel message
  uint16_t downlink, uplink;
  uint8_t rssi, rsrq;  // two's complement
  uint16_t rsrp;
  uint32_t tx_power;
};

struct Apn {
  std::string name;
  uint8_t type;
  uint8_t host;  // the last byte of its addresses
};

struct Operator {
  uint16_t mcc, mnc;
  std::string name;
};

// What no request changes.
struct Network {
  Cell cell;
  std::vector<Apn> apns;
  std::vector<Operator> operators;
  std::string subsidy_lock_code;
  Bytes data_plmn;  // 560 bytes
  Bytes silent_reboot_answer;
  Bytes call_end_radio_state;  // 17 bytes
  uint16_t pfp_version, pfp_rat;
  Bytes pfp_table;  // 224 bytes
};

constexpr uint32_t kMaxItemBytes = 512;
constexpr size_t kSidNidValues = 40;

struct Nam {
  e2e::Record record = e2e::kFactory;  // SID and NID stand in the pairs
  std::vector<uint16_t> pairs = std::vector<uint16_t>(kSidNidValues);
  std::string spc = "000000";
};

struct ItemKey {
  uint32_t rde_id;
  uint32_t record;
  auto operator<=>(const ItemKey&) const = default;
};

// What requests change.
struct Memory {
  std::map<ItemKey, Bytes> items;  // but those of the NAM
  Nam nam;
  uint32_t bands[2];
  uint32_t bsr_timer;
  std::vector<uint32_t> tot_order;
};

class ModemModel {
 public:
  explicit ModemModel(Draws& draws);

  const Network& network() const { return network_; }
  Memory& memory() { return memory_; }

  // The next exchange that the spoiling is meant for is spoiled.
  void spoil(const Spoiling& spoiling) {
    spoiling_ = spoiling;
    still_spared_ = spoiling.spared;
  }
  // The spoiling that an exchange has met since the last call.
  std::optional<Spoiling> take_met();

  // One exchange with the modem.
  Exchange ask(const std::string& message);

  // NV items. A read gives the item's bytes from `offset` on. A write of the daemon is never longer
  // than an item may be.
  struct Read {
    Got got;
    Bytes data;
  };
  Read read_item(ItemKey key, uint32_t offset = 0);
  bool write_item(ItemKey key, uint32_t offset, const Bytes& data);

  // A factory reset: after it the modem has to be given the state anew.
  void reset();
  bool take_was_reset() { return std::exchange(was_reset_, false); }
  // For the command "set" of the control socket.
  nlohmann::json state() const;

  // Frames that answered PFP requests owe to the parent, since the last call.
  uint32_t take_owed_tables() { return std::exchange(owed_tables_, 0); }
  void owe_table() { ++owed_tables_; }

 private:
  Network network_;
  Memory start_;
  Memory memory_;
  std::optional<Spoiling> spoiling_;
  uint32_t still_spared_ = 0;
  std::optional<Spoiling> met_;
  bool was_reset_ = true;
  uint32_t owed_tables_ = 0;
};

}  // namespace soak
