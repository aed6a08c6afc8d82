// SPDX-License-Identifier: Apache-2.0
// A NAM as the modem keeps it, between its items and the parent's record.
#pragma once

#include <stdint.h>

struct NamValues {
  char mdn[16];  // digits, NUL-terminated
  uint32_t min1;
  uint16_t min2;
  uint32_t imsi_t_s1;
  uint16_t imsi_t_s2;
  uint16_t sid;
  uint16_t nid;
  uint8_t scm;
  uint8_t imsi_11_12;
  uint16_t mcc;
  uint16_t primary_a;
  uint16_t primary_b;
  uint16_t secondary_a;
  uint16_t secondary_b;
  uint16_t vocoder;
  uint16_t mcc_t;
  uint8_t imsi_t_11_12;
  uint8_t overload_class;
};
