// SPDX-License-Identifier: Apache-2.0
// What the modem stores. Plain values: a copy is a snapshot.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

#include "modem/state/nv_store.h"
#include "protocol/engineering.h"

namespace modem {

constexpr size_t kTotOrderEntries = 15;
constexpr size_t kMaxApns = 8;
constexpr size_t kApnNameSize = 103;
constexpr size_t kMaxOperatorName = 64;
constexpr size_t kAkeySize = 26;
constexpr size_t kDataPlmnSize = 560;
constexpr size_t kPfpRemainingSize = 224;
constexpr size_t kRadioStateSize = 17;
constexpr size_t kTunerSize = 28;
constexpr size_t kMaxRoamingSegment = 16384;
constexpr size_t kMaxUtilsData = 256;
constexpr size_t kMaxUtilsAnswer = 512;
constexpr size_t kMaxHobStates = 1024;
constexpr size_t kMaxEngineeringText = 1000;

// The phone's reports on the hand-off block.
enum HobState : uint8_t { kHobFailed = 0, kHobSaved = 1, kHobReady = 0xFF };

// The simulation's own values: those of a real modem are not known.
enum ServiceState : uint8_t { kNoService = 0, kLimitedService = 1, kFullService = 2 };

// The LTE cell that the phone camps on.
struct LteCell {
  uint8_t service_state = kNoService;
  uint16_t mcc = 0;
  uint16_t mnc = 0;
  std::string network_description;
  uint32_t cell_id = 0;
  uint16_t first_channel = 0;
  uint16_t second_channel = 0;
  uint8_t channel_third_value = 0;  // of the LTE channel message; their meaning is not known
  uint8_t channel_fourth_value = 0;
  int8_t rssi = 0;   // dBm
  int8_t rsrq = 0;   // dB
  int16_t rsrp = 0;  // dBm
  int16_t snr = 0;   // tenths of a dB
  uint8_t in_traffic = 0;
  int32_t tx_power = 0;  // tenths of a dBm
};

struct Apn {
  std::string name;
  // Their meaning is not known.
  uint32_t first_value = 0;
  uint32_t second_value = 0;
  Bytes remaining_bytes;  // 16 bytes
};

// Names are UTF-8 here and GSM 7-bit (3GPP TS 23.038) on the air.
struct Operator {
  uint16_t mcc = 0;
  uint16_t mnc = 0;
  std::string short_name;
  std::string long_name;
};

struct Security {
  std::string subsidy_lock_code;  // 6 characters
  std::string akey;               // 26 digits; empty until one is written
};

struct RoamingList {
  uint32_t segments = 0;  // received so far
  Bytes last_segment;
};

struct Carrier {
  uint32_t bc10 = 0;
  uint32_t bc14 = 0;
  uint32_t active_profile = 0;
  uint32_t bsr_timer = 0;
  std::vector<uint32_t> tot_order;
  Bytes data_plmn;  // 560 bytes
  RoamingList roaming_list;
};

struct Engineering {
  protocol::CallProcessingRecord call_processing = {};
  protocol::EvdoRecord evdo = {};
  // Sent in place of the records when not empty.
  std::string call_processing_text;
  std::string evdo_text;
};

struct Pfp {
  uint16_t first_value = 0;  // its meaning is not known
  uint16_t rat = 0;
  Bytes remaining_bytes;  // 224 bytes
};

struct Features {
  Bytes tuner;
  Bytes silent_reboot_answer;
  Bytes auto_verify;  // data of the last notice
  uint8_t system_info_filter = 0;
  uint8_t coverage_mode = 0;
  std::string coverage_text;
  Bytes call_end_radio_state;        // 17 bytes
  std::vector<uint32_t> hob_states;  // the last bytes received, the newest last
};

struct State {
  NvStore nv;
  LteCell lte;
  std::vector<Apn> ehrpd_apns;
  std::vector<Operator> operators;
  Security security;
  Carrier carrier;
  Engineering engineering;
  Pfp pfp;
  Features features;
};

// The modem as it leaves the factory: plausible, invented content.
State factory_state();

}  // namespace modem
