// SPDX-License-Identifier: Apache-2.0
// The carrier's operations on the modem. Each is one exchange or a few; the result is checked and
// logged here. "1 or 0" means: 1 when the modem has done it, 0 after any failure.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "src/carrier_modem/carrier_messages.h"

// vendor_operations.cpp: the carrier's messages of the vendor service.

// These return 1 or 0.
int qor_qmi_sprint_fatory_reset(uint8_t mode);
int qor_qmi_sprint_set_bsr_timer(uint32_t timer);
int qor_qmi_sprint_update_tot_order(TotOrderRequest& order);
int qor_qmi_sprint_write_band(uint32_t selector, uint32_t band);
int qor_qmi_sprint_switch_proflie(uint32_t profile);

// A segment of more than 16384 bytes is cut without a log line. Returns 1 or 0.
int qor_qmi_sprint_set_roaming_list_segment(uint32_t length, const uint8_t* data);

// Copies at most 1000 bytes into `output`; `length` is the length that the modem reports, which may
// be more. Returns 1, or 0 with both unchanged.
int qor_qmi_sprint_get_engineering_info(int32_t type, uint8_t* output, uint32_t* length);

// These return the value; 0 also after a failure.
uint32_t qor_qmi_sprint_get_bsr_timer();
uint32_t qor_qmi_sprint_read_band(uint32_t selector);
uint32_t qor_qmi_sprint_get_lte_service_state();

// Stores each of the four values that the modem reports as valid; null pointers are skipped.
void qor_qmi_sprint_get_lte_ul_dl_channel(uint32_t* first_value, uint32_t* second_value,
                                          uint8_t* third_value, uint8_t* fourth_value);

// Returns 0 when the exchange took place, with any result in the response.
int qor_qmi_sprint_get_active_ehrpd_apn(ActiveApnResponse* response);

// Returns the response as received, also after a failed exchange.
TotOrderResponse qor_qmi_sprint_get_tot_order();

// rde.cpp: one NV item, addressed by RDE index, record number and offset.

constexpr uint32_t kRdeSuccess = 0;
constexpr uint32_t kRdeFailure = 4;

// Writes `length` bytes, at most 512; more are refused without a message to the modem. Returns
// kRdeSuccess or kRdeFailure.
uint32_t qor_qmi_sprint_rde_write(int32_t index, int32_t record, int32_t offset, uint32_t length,
                                  const void* data);

// Copies the item into `output` and its length in bytes into `length` (may be null). Returns
// kRdeSuccess or kRdeFailure. An item longer than `max_length`, or a null output, is a success with
// nothing stored; callers zero their buffers and read 0.
uint32_t qor_qmi_sprint_rde_read(int32_t index, int32_t record, int32_t offset, void* output,
                                 uint32_t max_length, uint32_t* length);

// nas_dms_operations.cpp: the standard services NAS and DMS.

// The state of the LTE link from three services, packed and little-endian, as the parent gets it.
struct __attribute__((packed)) LteData {
  uint32_t service_state;
  uint16_t mcc;
  uint16_t mnc;
  uint32_t cell_id;
  uint8_t channel_third_value;
  uint8_t channel_fourth_value;
  uint32_t channel_second_value;
  uint32_t channel_first_value;
  int8_t rssi;
  int16_t rsrp;
  int8_t rsrq;
  uint32_t tx_power;
};
static_assert(sizeof(LteData) == 30);
static_assert(offsetof(LteData, channel_second_value) == 14);
static_assert(offsetof(LteData, rssi) == 22);
static_assert(offsetof(LteData, tx_power) == 26);

// Fills the record field by field; a field that the modem does not report keeps its value. Returns
// 1 when the serving system, the signal and the transmit information were obtained, else 0 with the
// fields up to the failure.
int qor_qmi_sprint_get_lte_data(LteData* data);

// Secrets: A-key, service programming code, subsidy-lock code. All are characters as the parent
// sent them, not terminated; none is stored.

// Writes the CDMA A-key, which must have 26 characters; another length is refused without a message
// to the modem. `code` holds the 6 characters of the service programming code. Returns 1 or 0.
int qcril_qmi_nas_qor_cdma_validate_and_write_akey(const uint8_t* code, const uint8_t* akey,
                                                   int32_t akey_length);

// Changes the service programming code; 6 characters each. Returns 1 or 0.
int qor_qmi_sprint_write_spc(const uint8_t* current_spc, const uint8_t* new_spc);

// Lets the modem compare the 6-character subsidy-lock code. Returns 1 when it matches, else 0.
int verify_subsidy_lock(const uint8_t* code);

// startup_properties.cpp: configuration that is copied between modem and system properties at
// start-up. A failed exchange with the modem is logged; no failure stops the start-up.

// Publishes the modem's LTE band classes as "ril.lte.bc.config". Returns the result of
// property_set.
int publish_lte_bc_config();

// Publishes the modem's configuration as "ril.baseband.config.ver_num" and
// "ril.baseband.config.version".
void qor_qmi_read_baseband_config_version();

// Writes the IMEI software version of "ro.radio.imei.sv" (one or two characters) to the modem.
void update_imei_sv();
