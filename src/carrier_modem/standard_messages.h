// SPDX-License-Identifier: Apache-2.0
// The NAS and DMS messages of the carrier's operations. The layouts are those of the published
// services' C structures; members that are not used here are joined in `unused` arrays.
#pragma once

#include <stddef.h>
#include <stdint.h>

constexpr unsigned int kNasGetServingSystem = 0x24;
constexpr unsigned int kNasGetSigInfo = 0x4F;
constexpr unsigned int kNasGetTxRxInfo = 0x5A;
constexpr unsigned int kNasWriteAkey = 0x5B;
constexpr unsigned int kDmsVerifySubsidyLock = 0x3B;
constexpr unsigned int kDmsWriteSpc = 0x52;

constexpr size_t kCodeSize = 6;
constexpr size_t kAkeySize = 26;

// Every response begins with it.
struct QmiResult {
  uint32_t result;  // 0 is success
  uint32_t error;
};
static_assert(sizeof(QmiResult) == 8);

// MCC, MNC and cell id of the serving cell.
struct ServingSystemResponse {
  QmiResult qmi;
  uint8_t unused_before[1096];
  uint8_t plmn_valid;
  uint8_t padding;
  uint16_t mcc;
  uint16_t mnc;
  uint8_t unused_between[324];
  uint8_t cell_id_valid;
  uint8_t padding_of_cell_id;
  uint32_t cell_id;
  uint8_t unused_after[68];
};
static_assert(sizeof(ServingSystemResponse) == 1508);
static_assert(offsetof(ServingSystemResponse, plmn_valid) == 1104);
static_assert(offsetof(ServingSystemResponse, mcc) == 1106);
static_assert(offsetof(ServingSystemResponse, mnc) == 1108);
static_assert(offsetof(ServingSystemResponse, cell_id_valid) == 1434);
static_assert(offsetof(ServingSystemResponse, cell_id) == 1436);

// Levels of the LTE signal: RSSI and RSRP in dBm, RSRQ in dB.
struct SigInfoResponse {
  QmiResult qmi;
  uint8_t unused_before[28];
  uint8_t lte_valid;
  uint8_t padding;
  int8_t lte_rssi;
  int8_t lte_rsrq;
  int16_t lte_rsrp;
  uint8_t unused_after[22];
};
static_assert(sizeof(SigInfoResponse) == 64);
static_assert(offsetof(SigInfoResponse, lte_valid) == 36);
static_assert(offsetof(SigInfoResponse, lte_rssi) == 38);
static_assert(offsetof(SigInfoResponse, lte_rsrp) == 40);

constexpr uint32_t kRadioInterfaceLte = 8;

struct TxRxInfoRequest {
  uint32_t radio_interface;
};
static_assert(sizeof(TxRxInfoRequest) == 4);

// `tx_power` is valid while the radio transmits.
struct TxRxInfoResponse {
  QmiResult qmi;
  uint8_t unused_before[56];
  uint8_t tx_valid;
  uint8_t unused_between[7];
  uint32_t tx_power;
  uint8_t unused_after[88];
};
static_assert(sizeof(TxRxInfoResponse) == 164);
static_assert(offsetof(TxRxInfoResponse, tx_valid) == 64);
static_assert(offsetof(TxRxInfoResponse, tx_power) == 72);

// Codes and keys are characters without a terminator.
struct AkeyRequest {
  uint8_t spc[kCodeSize];
  uint8_t akey[kAkeySize];
};
static_assert(sizeof(AkeyRequest) == 32);

struct SubsidyLockRequest {
  uint8_t code[kCodeSize];
};
static_assert(sizeof(SubsidyLockRequest) == 6);

struct SpcRequest {
  uint8_t current_spc[kCodeSize];
  uint8_t new_spc[kCodeSize];
};
static_assert(sizeof(SpcRequest) == 12);
