// SPDX-License-Identifier: Apache-2.0
// A small model of the modem: its memory and the result of each exchange with the daemon. It shares
// no code with the simulated modem.
#pragma once

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "tests/e2e/support/nam_fixture.h"
#include "tests/soak/random.h"

namespace soak {

// The result of an exchange for the daemon: the modem's answer, a refusal, or nothing usable.
enum class Got { answer, refusal, nothing };

struct FaultKind {
  const char* name;  // in the words of the modem's control socket
  bool is_served;    // whether the request still has its effect on the modem
  Got got;
};

std::span<const FaultKind> all_faults();
// Faults that make the daemon wait for its timeout of 15 seconds.
std::span<const FaultKind> slow_faults();

// A fault to inject into one exchange.
struct Fault {
  const FaultKind* kind;
  std::string message;  // the name of the request
  uint32_t unaffected;  // the number of earlier requests with this name
  uint16_t result;      // of a refusal
  uint16_t error;

  // The commands to the modem that inject it.
  std::vector<std::string> commands() const;
};

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
  uint16_t second_channel, first_channel;
  uint8_t rssi, rsrq;  // two's complement
  uint16_t rsrp;
  uint32_t tx_power;
};

struct Apn {
  std::string name;
  uint8_t first_value;
  uint8_t last_byte;  // of the second value and of the remaining bytes
};

struct Operator {
  uint16_t mcc, mnc;
  std::string name;
};

// State that no request changes.
struct Network {
  Cell cell;
  std::vector<Apn> apns;
  std::vector<Operator> operators;
  std::string subsidy_lock_code;
  Bytes data_plmn;  // 560 bytes
  Bytes silent_reboot_answer;
  Bytes call_end_radio_state;  // 17 bytes
  uint16_t pfp_first_value, pfp_rat;
  Bytes pfp_bytes;  // 224 bytes
};

constexpr uint32_t kMaxItemBytes = 512;
constexpr size_t kSidNidValues = 40;

struct Nam {
  e2e::Record record = e2e::kFactory;  // SID and NID are in the pairs
  std::vector<uint16_t> pairs = std::vector<uint16_t>(kSidNidValues);
  std::string spc = "000000";
};

struct ItemKey {
  uint32_t rde_id;
  uint32_t record;
  auto operator<=>(const ItemKey&) const = default;
};

// State that requests change.
struct Memory {
  std::map<ItemKey, Bytes> items;  // except those of the NAM
  Nam nam;
  uint32_t bands[2];
  uint32_t bsr_timer;
  std::vector<uint32_t> tot_order;
};

class ModemModel {
 public:
  explicit ModemModel(Random& random);

  const Network& network() const { return network_; }
  Memory& memory() { return memory_; }

  // Injects the fault into the next exchange to which it applies.
  void inject(const Fault& fault) {
    fault_ = fault;
    unaffected_ = fault.unaffected;
  }
  // Returns the fault if an exchange has met it since inject(), and removes it.
  std::optional<Fault> take_met();

  // One exchange with the modem.
  Exchange request(const std::string& message);

  // NV items. A read returns the item's bytes from `offset`. The daemon never writes more bytes
  // than an item can have.
  struct Read {
    Got got;
    Bytes data;
  };
  Read read_item(ItemKey key, uint32_t offset = 0);
  bool write_item(ItemKey key, uint32_t offset, const Bytes& data);

  // A factory reset. The modem must get the state() again afterwards.
  void reset();
  bool take_was_reset() { return std::exchange(was_reset_, false); }
  // For the modem's command "set".
  nlohmann::json state() const;

  // The number of PFP tables requested since the last call; each one becomes a message to the
  // parent.
  uint32_t take_expected_tables() { return std::exchange(expected_tables_, 0); }
  void expect_table() { ++expected_tables_; }

 private:
  Network network_;
  Memory start_;
  Memory memory_;
  std::optional<Fault> fault_;
  uint32_t unaffected_ = 0;
  std::optional<Fault> met_;
  bool was_reset_ = true;
  uint32_t expected_tables_ = 0;
};

}  // namespace soak
