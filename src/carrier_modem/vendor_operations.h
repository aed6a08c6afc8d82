// SPDX-License-Identifier: Apache-2.0
// The carrier's operations on the modem's vendor service: each one exchange, judged and logged
// here.
#pragma once

#include <stdint.h>

#include "src/carrier_modem/carrier_messages.h"

// These return 1 when the modem has done it, else 0.
int qor_qmi_sprint_fatory_reset(uint8_t mode);
int qor_qmi_sprint_set_bsr_timer(uint32_t timer);
int qor_qmi_sprint_update_tot_order(TotOrderRequest& order);
int qor_qmi_sprint_write_band(uint32_t selector, uint32_t band);
int qor_qmi_sprint_switch_proflie(uint32_t profile);

// 1 or 0 likewise. A segment above 16384 bytes is silently cut.
int qor_qmi_sprint_set_roaming_list_segment(uint32_t length, const uint8_t* data);

// Copies at most 1000 bytes into `output` and the length as the modem tells it, which may be more,
// through `length`. 1, or 0 with both left alone.
int qor_qmi_sprint_get_engineering_info(int32_t type, uint8_t* output, uint32_t* length);

// The value; 0 also when it could not be had.
uint32_t qor_qmi_sprint_get_bsr_timer();
uint32_t qor_qmi_sprint_read_band(uint32_t selector);

// Stores those of the four values that the modem tells; null pointers are passed over.
void qor_qmi_sprint_get_lte_ul_dl_channel(uint32_t* first, uint32_t* second, uint8_t* third,
                                          uint8_t* fourth);

// 0 when the exchange took place, whatever the response says.
int qor_qmi_sprint_get_active_ehrpd_apn(ActiveApnResponse* response);

// The response as it stands, also after a failed exchange.
TotOrderResponse qor_qmi_sprint_get_tot_order();
