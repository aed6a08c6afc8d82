// SPDX-License-Identifier: Apache-2.0
// The vendor service's general-purpose message (0x0F): requests, their responses and indications,
// each with a type and up to 256 or 512 bytes of data.
#pragma once

#include <stddef.h>
#include <stdint.h>

constexpr unsigned int kUtilityMessage = 0x0F;

enum UtilityType : uint32_t {
  kUtilitySilentReboot = 3,
  kUtilityAutoVerifySimPin = 4,
  kUtilitySysInfoFilter = 5,
  kUtilityCoverage = 6,
  kUtilityCallEndRadioState = 7,
};

constexpr uint32_t UTILS_REQ_DATA_SIZE_V01 = 256;
constexpr uint32_t kUtilityDataSize = 512;

struct utils_req_msg_v01 {
  uint32_t type;
  uint32_t length;
  uint8_t data[UTILS_REQ_DATA_SIZE_V01];
};
static_assert(sizeof(utils_req_msg_v01) == 264);
static_assert(offsetof(utils_req_msg_v01, data) == 8);

struct utils_resp_msg_v01 {
  uint32_t unused;
  uint32_t length;
  uint8_t data[kUtilityDataSize];
};
static_assert(sizeof(utils_resp_msg_v01) == 520);
static_assert(offsetof(utils_resp_msg_v01, data) == 8);

struct utils_ind_msg_v01 {
  uint32_t type;
  uint32_t length;
  uint8_t data[kUtilityDataSize];
};
static_assert(sizeof(utils_ind_msg_v01) == 520);
static_assert(offsetof(utils_ind_msg_v01, data) == 8);
