// SPDX-License-Identifier: Apache-2.0
// The handlers, one per message; dispatch.cpp has the table.
#pragma once

#include <stdint.h>

#include "modem/handlers/dispatch.h"

namespace modem {

using qmi_json::Fields;

// The QMI error numbers that the modem answers with.
enum QmiError : uint16_t {
  kErrorNone = 0,
  kErrorMalformed = 1,
  kErrorNotProvisioned = 16,
  kErrorInvalidArgument = 48,
  kErrorAuthenticationFailed = 85,
  kErrorNoRadio = 93,
  kErrorNotSupported = 94,
};

constexpr uint16_t kResultFailure = 1;

// A response reports its outcome in one of three forms: the QMI result record (0 is success), a
// number "status" (0 is success), or a number "outcome" (1 is success) followed by an error. A form
// without room for the error leaves it out.
void report_success(Fields& response);
void report_failure(Fields& response, uint16_t error, uint16_t result = kResultFailure);

// NV items
void element_read(Device& device, const Fields& request, Fields& response);
void element_write(Device& device, const Fields& request, Fields& response);

// Features of the vendor service
void request_pfp(Device& device, const Fields& request, Fields& response);
void serve_utils(Device& device, const Fields& request, Fields& response);
void report_hob(Device& device, const Fields& request, Fields& response);
void get_data_plmn(Device& device, const Fields& request, Fields& response);
void set_tuner(Device& device, const Fields& request, Fields& response);

// Carrier settings of the vendor service
void get_engineering_info(Device& device, const Fields& request, Fields& response);
void factory_reset(Device& device, const Fields& request, Fields& response);
void set_roaming_list_segment(Device& device, const Fields& request, Fields& response);
void read_band(Device& device, const Fields& request, Fields& response);
void write_band(Device& device, const Fields& request, Fields& response);
void switch_profile(Device& device, const Fields& request, Fields& response);
void get_tot_order(Device& device, const Fields& request, Fields& response);
void update_tot_order(Device& device, const Fields& request, Fields& response);
void get_active_ehrpd_apn(Device& device, const Fields& request, Fields& response);
void get_lte_service_state(Device& device, const Fields& request, Fields& response);
void get_bsr_timer(Device& device, const Fields& request, Fields& response);
void set_bsr_timer(Device& device, const Fields& request, Fields& response);
void get_lte_channel(Device& device, const Fields& request, Fields& response);

// NAS
void get_serving_system(Device& device, const Fields& request, Fields& response);
void get_plmn_name(Device& device, const Fields& request, Fields& response);
void get_sig_info(Device& device, const Fields& request, Fields& response);
void get_tx_rx_info(Device& device, const Fields& request, Fields& response);
void write_akey(Device& device, const Fields& request, Fields& response);

// DMS
void verify_subsidy_lock(Device& device, const Fields& request, Fields& response);
void write_spc(Device& device, const Fields& request, Fields& response);

}  // namespace modem
