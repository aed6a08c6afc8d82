// SPDX-License-Identifier: Apache-2.0
// What the modem knows of its LTE link, from three services, in one record.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Packed and little-endian, as the parent gets it.
struct __attribute__((packed)) LteData {
  uint32_t service_state;
  uint16_t mcc;
  uint16_t mnc;
  uint32_t cell_id;
  uint8_t channel_third;
  uint8_t channel_fourth;
  uint32_t channel_second;
  uint32_t channel_first;
  int8_t rssi;
  int16_t rsrp;
  int8_t rsrq;
  uint32_t tx_power;
};
static_assert(sizeof(LteData) == 30);
static_assert(offsetof(LteData, channel_second) == 14);
static_assert(offsetof(LteData, rssi) == 22);
static_assert(offsetof(LteData, tx_power) == 26);

// Fills the record field by field; what the modem does not tell keeps its value. 1 when the serving
// system, the signal and the transmit information were obtained, else 0 with the fields so far.
int qor_qmi_sprint_get_lte_data(LteData* data);
